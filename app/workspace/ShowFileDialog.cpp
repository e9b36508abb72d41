#include "app/workspace/ShowFileDialog.h"

namespace trevane {

QString ShowFileDialog(UserPrompts& prompts, const QString& filter, FileQuestion::Mode mode,
                       const QString& fileName, const QString& initialFolder) {
  return prompts.ChooseFile(
      {.mode = mode,
       .title = mode == FileQuestion::Mode::Save ? QStringLiteral("Save") : QStringLiteral("Open"),
       .filter = filter,
       .fileName = fileName,
       .initialFolder = initialFolder});
}

}  // namespace trevane
