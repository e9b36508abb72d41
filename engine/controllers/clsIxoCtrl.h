#pragma once

#include <QString>

namespace trevane {

/// The record of one connected or remembered controller: the texts that the user typed to connect it, and the
/// name and index that the engine gave it.
class clsIxoCtrl {
 public:
  /// As the user entered it; may be empty.
  [[nodiscard]] const QString& CtrlName() const noexcept { return ctrlName_; }
  void SetCtrlName(const QString& name) { ctrlName_ = name; }

  /// The name that the engine gave: shown in the tree and used in addresses.
  [[nodiscard]] const QString& RealCtrlName() const noexcept { return realCtrlName_; }
  void SetRealCtrlName(const QString& name) { realCtrlName_ = name; }

  [[nodiscard]] const QString& ProvName() const noexcept { return provName_; }
  void SetProvName(const QString& name) { provName_ = name; }

  [[nodiscard]] const QString& MachineName() const noexcept { return machineName_; }
  void SetMachineName(const QString& name) { machineName_ = name; }

  [[nodiscard]] const QString& CtrlOption() const noexcept { return ctrlOption_; }
  void SetCtrlOption(const QString& option) { ctrlOption_ = option; }

  /// IxoController::Index.
  [[nodiscard]] qint32 CtrlIdx() const noexcept { return ctrlIdx_; }
  void SetCtrlIdx(qint32 index) noexcept {
    ctrlIdx_ = index;
    rootPath_.clear();
  }

  /// The folder on the controller that counts as its top.
  [[nodiscard]] const QString& Root() const noexcept { return root_; }
  void SetRoot(const QString& root) {
    root_ = root;
    rootPath_.clear();
  }

  /// Where the engine found the root; empty as long as it was not opened.
  [[nodiscard]] const QString& RootPath() const noexcept { return rootPath_; }
  void SetRootPath(const QString& path) { rootPath_ = path; }

  /// IxoController::Notice.
  [[nodiscard]] const QString& Notice() const noexcept { return notice_; }
  void SetNotice(const QString& notice) { notice_ = notice; }

 private:
  QString ctrlName_;
  QString realCtrlName_;
  QString provName_;
  QString machineName_;
  QString ctrlOption_;
  qint32 ctrlIdx_ = 0;
  QString root_;
  QString rootPath_;
  QString notice_;
};

}  // namespace trevane
