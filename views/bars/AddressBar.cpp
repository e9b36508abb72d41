#include "views/bars/AddressBar.h"

#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"
#include "views/bars/HistoryBox.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/navigation/MayHold.h"
#include "views/navigation/Navigator.h"

#include <QLineEdit>

#include <utility>

namespace trevane {

AddressBar::AddressBar(HistoryBox& cmbAddress, FileListView& list, const AddressNavigation::Parts& parts)
    : cmbAddress_(cmbAddress),
      list_(list),
      files_(parts.files),
      navigator_(parts.navigator),
      reasonLine_(parts.reasonLine),
      navigation_(parts) {
  connect(&cmbAddress_, &HistoryBox::Entered, this, &AddressBar::Go);
  connect(&cmbAddress_, &HistoryBox::EscapePressed, this, [this] {
    cmbAddress_.setEditText(navigator_.CurrentAddress());
    cmbAddress_.lineEdit()->setModified(false);
    cmbAddress_.lineEdit()->selectAll();
  });
}

bool AddressBar::GoToAddress() {
  if (navigator_.IsDisplaying()) {
    // The listing that is on its way lets no other call of the engine in: it ends first.
    if (const QString address = cmbAddress_.currentText(); address != navigator_.CurrentAddress()) {
      awaited_ = {};
      navigator_.CancelDisplay();
      entered_ = address;
    }
    return true;
  }
  awaited_ = {};
  cmbAddress_.lineEdit()->setModified(false);
  const quint64 call = ++calls_;
  const auto arrival = navigation_.GoToAddress(cmbAddress_.currentText());
  if (!arrival) {
    return false;
  }
  // Another address was entered while this one was displayed: the newest one counts.
  if (call != calls_) {
    return true;
  }
  // A folder that could not be displayed was reported; it does not belong in the history.
  const bool isShown = navigator_.IsShown() && navigator_.CurrentAddress() == arrival->address;
  if (!navigator_.IsDisplaying() && !isShown) {
    return true;
  }
  // Not the text of the box: another folder may have been displayed meanwhile, or this one is still waiting.
  cmbAddress_.AddToHistory(arrival->address);
  awaited_ = *arrival;
  if (!navigator_.IsDisplaying()) {
    DisplayEnded();
  }
  return true;
}

void AddressBar::Go() {
  if (files_.Prompts().IsEnding() || isRefused_()) {
    return;
  }
  GoAndTell();
}

bool AddressBar::GoAndTell() {
  const std::shared_ptr<void> command = command_();
  if (GoToAddress()) {
    list_.setFocus();
    return true;
  }
  ShowFailure(files_.Prompts(), reasonLine_, QStringLiteral("Failed Move to a specified address."),
              {.item = cmbAddress_.currentText(), .reason = navigation_.Reason()});
  return false;
}

void AddressBar::GoInstead(const QString& address) {
  cmbAddress_.setEditText(address);
  if (files_.Prompts().IsEnding() || GoAndTell()) {
    return;
  }
  // The folder whose display has ended for it is the one to be shown.
  navigator_.Refresh();
  cmbAddress_.setEditText(address);
  cmbAddress_.setFocus();
}

void AddressBar::DisplayEnded() {
  if (const std::optional<QString> entered = std::exchange(entered_, std::nullopt)) {
    GoInstead(*entered);
    return;
  }
  const AddressNavigation::Arrival arrival = std::exchange(awaited_, {});
  if (arrival.fileName.isEmpty() || navigator_.CurrentAddress() != arrival.address) {
    return;
  }
  // A file that is hidden or filtered out has no item.
  const FileListModel::Handle item = list_.Files()->FindByText(arrival.fileName);
  const QModelIndex index = list_.Files()->IndexOf(item);
  if (!index.isValid()) {
    return;
  }
  // Of two files whose names differ in case only the list shows one and has reported the other.
  if (list_.Files()->Text(item) != arrival.fileName && MayHold(files_, arrival.address, arrival.fileName)) {
    return;
  }
  list_.setCurrentIndex(index);
  list_.scrollTo(index);
}

}  // namespace trevane
