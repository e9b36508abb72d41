#include "app/workspace/WorkspaceConnector.h"

#include "fileops/OperationHost.h"
#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/NodeTags.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"

#include <memory>

namespace trevane {

void WorkspaceConnector::Connect(const WorkspaceContent& content) {
  ProgressGauge& gauge = parts_.prompts.Gauge();
  gauge.ShowGage(QStringLiteral("Open Controllers"));
  gauge.SetGageMax(static_cast<qint32>(content.sectionCount));
  gauge.CancelEnable(true);
  for (const WorkspaceSection& section : content.sections) {
    ConnectSection(section);
    parts_.host.LetEventsRun();
    gauge.IncrementGageValue({});
    if (parts_.prompts.IsCancelled()) {
      break;
    }
  }
}

void WorkspaceConnector::ConnectSection(const WorkspaceSection& section) {
  const auto controller = std::make_shared<clsIxoCtrl>(section.controller);
  const QString name = controller->CtrlName();
  parts_.prompts.Gauge().SetGageLabel(QStringLiteral("Connect Controller(") + name + QStringLiteral(")."));
  // Connecting blocks: the name has to be readable before.
  parts_.prompts.Gauge().PaintGage();
  parts_.host.LetPaintingRun();
  const ConnectOutcome result = parts_.connector.ConnectController(controller);
  if (result) {
    if (IsWorkspaceShown()) {
      static_cast<void>(parts_.connector.Display().AddControllerItem(*controller, false));
    }
    return;
  }
  ShowFailed(*controller, section.name);
  ShowFailure(parts_.prompts, parts_.host,
              QStringLiteral("Failed in connecting to the controller( ") + name + QStringLiteral(" )."),
              {.item = name.isEmpty() ? section.name : name, .reason = result.reason});
}

void WorkspaceConnector::ShowFailed(const clsIxoCtrl& controller, const QString& section) {
  clsIxoCtrl shown = controller;
  if (shown.RealCtrlName().isEmpty()) {
    shown.SetRealCtrlName(controller.CtrlName().isEmpty() ? section : controller.CtrlName());
  }
  if (parts_.connector.Display().AddControllerNode(shown, true) && IsWorkspaceShown()) {
    static_cast<void>(parts_.connector.Display().AddControllerItem(shown, true));
  }
}

bool WorkspaceConnector::IsWorkspaceShown() const {
  const FolderNode* current = parts_.navigator.CurrentNode();
  return current != nullptr && IsWorkspace(current->Tag());
}

}  // namespace trevane
