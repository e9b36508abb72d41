#include "app/workspace/ShowFileDialog.h"

namespace trevane {

using namespace Qt::StringLiterals;

QString ShowFileDialog(UserPrompts& prompts, const QString& filter, FileQuestion::Mode mode,
                       const QString& fileName, const QString& initialFolder) {
  return prompts.ChooseFile({.mode = mode,
                             .title = mode == FileQuestion::Mode::Save ? u"Save"_s : u"Open"_s,
                             .filter = filter,
                             .fileName = fileName,
                             .initialFolder = initialFolder});
}

}  // namespace trevane
