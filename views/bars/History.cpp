#include "views/bars/History.h"

namespace trevane {

QStringList AddedToHistory(QStringList history, const QString& text) {
  if (history.size() < kHistoryEntries) {
    history.removeOne(text);
  } else {
    history.removeAt(kHistoryEntries - 1);
  }
  history.prepend(text);
  return history;
}

}  // namespace trevane
