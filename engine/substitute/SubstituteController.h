#pragma once

#include "engine/model/IxoController.h"
#include "engine/substitute/FileSystemSession.h"

namespace trevane {

class SubstituteFiles;

class SubstituteController final : public IxoController {
 public:
  SubstituteController(const QString& name, qint32 index, std::shared_ptr<FileSystemSession> session);
  SubstituteController(const SubstituteController&) = delete;
  SubstituteController& operator=(const SubstituteController&) = delete;

  [[nodiscard]] std::shared_ptr<IxoFiles> Files() override;
  [[nodiscard]] qint32 Index() override { return index_; }
  [[nodiscard]] bool IsCaseSensitive() override { return session_->Capabilities().caseSensitive; }
  [[nodiscard]] QString Name() override { return name_; }
  [[nodiscard]] QString Notice() override { return session_->Capabilities().notice; }
  [[nodiscard]] QStringList Details() override { return session_->Files().Details(QString()); }
  /// Files opened here are not cached.
  [[nodiscard]] std::shared_ptr<IxoFile> OpenFile(const QString& name, const QString& option) override;
  [[nodiscard]] std::shared_ptr<IxoFile> OpenKnownFolder(const QString& name, const QString& folder) override;

 private:
  [[nodiscard]] QString PathOf(const QString& name, const QString& folder) const;

  QString name_;
  qint32 index_;
  std::shared_ptr<FileSystemSession> session_;
  std::shared_ptr<SubstituteFiles> files_;
};

}  // namespace trevane
