#pragma once

#include "engine/model/Content.h"
#include "engine/remote/LearntChange.h"

#include <memory>
#include <utility>

namespace trevane {

/// A sink whose steps, its end among them, forget the folder of its file.
class LearntSink final : public ContentSink {
 public:
  LearntSink(std::unique_ptr<ContentSink> behind, std::shared_ptr<LearntMemory> memory, const QString& path)
      : memory_(std::move(memory)), path_(path), end_(*memory_, path_), behind_(std::move(behind)) {}
  LearntSink(const LearntSink&) = delete;
  LearntSink& operator=(const LearntSink&) = delete;

  void Write(const QByteArray& piece) override {
    const LearntChange change(*memory_, path_);
    behind_->Write(piece);
  }
  [[nodiscard]] std::optional<QString> TemporaryName() const override { return behind_->TemporaryName(); }
  [[nodiscard]] SeenItem Commit() override {
    const LearntChange change(*memory_, path_);
    return behind_->Commit();
  }

 private:
  const std::shared_ptr<LearntMemory> memory_;
  const QString path_;
  const LearntChange end_;
  const std::unique_ptr<ContentSink> behind_;
};

}  // namespace trevane
