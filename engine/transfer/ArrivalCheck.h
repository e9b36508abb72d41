#pragma once

#include "base/RunTimeError.h"
#include "engine/model/IxoFile.h"

#include <QString>

#include <optional>
#include <vector>

namespace trevane {

/// A file that was copied, as it was told when its content was put in place.
struct ArrivedFile {
  QString name;
  /// The bytes that were written.
  qint64 size = 0;
  Date modified;
  /// Nothing had its name before.
  bool isNew = true;
  /// As ContentSource::HadWrongSize.
  bool hadWrongSize = false;
};

/// Asks a folder anew for the files that were copied into it, since an answer to a write may be reckoned from
/// what was sent. One listing serves all files. Nothing is asked of a folder that sees arrivals itself.
class ArrivalCheck final {
 public:
  struct Failure {
    QString name;
    RunTimeError error;
  };

  void Add(const ArrivedFile& file) { files_.push_back(file); }
  [[nodiscard]] bool IsEmpty() const noexcept { return files_.empty(); }

  /// Lists `folder` and forgets the files. The result is each file that is missing or has another size; what
  /// stands there of a new one is deleted, unless another program has replaced it. Fails where the folder
  /// cannot be listed.
  [[nodiscard]] std::vector<Failure> List(const std::shared_ptr<IxoFile>& folder);
  /// The same where a listing would cost more: asks for each file alone.
  [[nodiscard]] std::vector<Failure> Find(const std::shared_ptr<IxoFile>& folder);

 private:
  std::vector<ArrivedFile> files_;
};

}  // namespace trevane
