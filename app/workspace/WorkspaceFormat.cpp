#include "app/workspace/WorkspaceFormat.h"

#include "app/settings/StoredControllers.h"
#include "app/settings/clsProfile.h"

namespace trevane {

WorkspaceContent ReadWorkspace(const QByteArray& text) {
  clsProfile profile{QString()};
  profile.HoldText(text);
  const QStringList names = profile.GetSectNames();
  WorkspaceContent content;
  content.sectionCount = names.size();
  for (const QString& name : clsProfile::NamesInUse(names)) {
    content.sections.push_back({name, ReadController(profile, name, ControllerFile::Workspace)});
  }
  return content;
}

QByteArray WriteWorkspace(const std::vector<WorkspaceSection>& sections) {
  clsProfile profile{QString()};
  profile.HoldAnew();
  for (const WorkspaceSection& section : sections) {
    WriteController(profile, section.name, ControllerFile::Workspace, section.controller);
  }
  return profile.HeldText();
}

}  // namespace trevane
