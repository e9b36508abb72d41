#pragma once

#include <QtGlobal>

namespace trevane {

class CommandBars;
class FileListView;
class Navigator;
struct OperationState;

/// Enables and disables the commands as the displayed folder, the selection and the clipboard set allow.
class CommandStates final {
 public:
  /// All of them outlive this object.
  CommandStates(CommandBars& bars, const Navigator& navigator, const FileListView& list,
                const OperationState& operations)
      : bars_(bars), navigator_(navigator), list_(list), operations_(operations) {}

  /// By the tag of the entry in question; `entry` is true when the entry itself was clicked.
  void Update(qint32 tag, bool entry);
  /// By the selected items of the list or, without any, by the displayed folder.
  void UpdateBySelection();
  /// By the displayed folder, which the tree shows as its current node.
  void UpdateDisconnectByFolder();

  void EnableDisconnect(bool enabled);
  void EnableDisconnectButton(bool enabled);
  void EnableDisconnectItem(bool enabled);
  void EnablePasteButton(bool enabled);

 private:
  CommandBars& bars_;
  const Navigator& navigator_;
  const FileListView& list_;
  const OperationState& operations_;
};

}  // namespace trevane
