#pragma once

#include "views/navigation/AddressNavigation.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace trevane {

class FileListView;
class HistoryBox;

/// The behaviour of the address box: Enter opens its address, Esc restores the current address.
class AddressBar final : public QObject {
  Q_OBJECT

 public:
  /// All of them outlive this object.
  AddressBar(HistoryBox& cmbAddress, FileListView& list, const AddressNavigation::Parts& parts);

  /// Goes to the address in the box and puts it into the history; a file that it names is selected in the
  /// list. False when the address leads nowhere: it stays in the box to be corrected. While a folder is being
  /// displayed it is noted; that display ends, and the address is gone to instead.
  [[nodiscard]] bool GoToAddress();

  /// GoToAddress, with the focus in the list after it or a message when it fails.
  void Go();

  /// Must be called when no display is running any more.
  void DisplayEnded();
  /// Must be called when the display that is running is to end: another place was chosen after an address was
  /// entered, if one was.
  void DisplayGivenUp() { entered_.reset(); }
  /// While it answers true no address is gone to.
  void SetRefusal(std::function<bool()> isRefused) { isRefused_ = std::move(isRefused); }
  /// Called when an address is gone to, which ends with the returned object.
  void SetCommand(std::function<std::shared_ptr<void>()> begin) { command_ = std::move(begin); }

 private:
  HistoryBox& cmbAddress_;
  FileListView& list_;
  FileAccess files_;
  Navigator& navigator_;
  ReasonLine& reasonLine_;
  AddressNavigation navigation_;
  /// The file to be selected as soon as its folder is displayed.
  AddressNavigation::Arrival awaited_;
  /// GoToAddress, with what follows it. False when the address leads nowhere.
  bool GoAndTell();
  void GoInstead(const QString& address);

  /// While a folder was displayed.
  std::optional<QString> entered_;
  /// Counts the calls of GoToAddress.
  quint64 calls_ = 0;
  std::function<bool()> isRefused_ = [] { return false; };
  std::function<std::shared_ptr<void>()> command_ = [] { return nullptr; };
};

}  // namespace trevane
