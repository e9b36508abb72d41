#include "views/bars/FilterBar.h"

#include "views/addresses/NodeTags.h"
#include "views/bars/HistoryBox.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"

#include <utility>

namespace trevane {

FilterBar::FilterBar(HistoryBox& cmbFilter, const Navigator& navigator, std::function<void()> redisplay)
    : cmbFilter_(cmbFilter), navigator_(navigator), redisplay_(std::move(redisplay)) {
  connect(&cmbFilter_, &HistoryBox::Entered, this, &FilterBar::SwitchWanted);
  connect(&cmbFilter_, &QComboBox::editTextChanged, this, &FilterBar::CheckText);
  CheckText();
}

void FilterBar::SwitchClicked(bool down) {
  filter_.SetOn(down);
  Apply();
}

void FilterBar::ModeClicked(bool down) {
  filter_.SetMode(down ? FilterMode::Exclude : FilterMode::Include);
  if (filter_.IsOn()) {
    Apply();
  }
}

qint32 FilterBar::CurrentTag() const {
  const FolderNode* current = navigator_.CurrentNode();
  return current ? current->Tag() : TAG_WORKSPACE;
}

void FilterBar::Apply() {
  const qint32 tag = CurrentTag();
  if (IsWorkspace(tag) || IsMyComputer(tag)) {
    return;
  }
  // A text typed during a long display has not filtered anything.
  const QString used = cmbFilter_.currentText();
  redisplay_();
  cmbFilter_.AddToHistory(used);
}

void FilterBar::BeginDisplay() {
  filter_.SetText(cmbFilter_.currentText());
}

bool FilterBar::IsFilteredOut(const QString& fileName) const {
  return filter_.IsFilteredOut(fileName, CurrentTag());
}

void FilterBar::CheckText() {
  FileFilter typed;
  typed.SetText(cmbFilter_.currentText());
  cmbFilter_.ShowProblem(typed.Problem());
}

}  // namespace trevane
