#pragma once

#include "engine/controllers/clsIxoCtrl.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace trevane {

/// One section of a workspace file.
struct WorkspaceSection {
  /// The controller's name as the engine gave it.
  QString name;
  clsIxoCtrl controller;
};

/// The content of a workspace file.
struct WorkspaceContent {
  /// In the order of the file, up to the first section without a name.
  std::vector<WorkspaceSection> sections;
  /// Of all sections, also those behind one without a name.
  qsizetype sectionCount = 0;
};

/// Reads the text of a workspace file. Any text is one; a key that is missing has its default.
[[nodiscard]] WorkspaceContent ReadWorkspace(const QByteArray& text);

/// The text of a workspace file of these sections, in their order. Sections of one name become one with the
/// later values.
[[nodiscard]] QByteArray WriteWorkspace(const std::vector<WorkspaceSection>& sections);

}  // namespace trevane
