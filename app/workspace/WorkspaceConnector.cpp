#include "app/workspace/WorkspaceConnector.h"

#include "base/RunTimeError.h"
#include "fileops/OperationHost.h"
#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/NodeTags.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"

#include <memory>

namespace trevane {

struct WorkspaceConnector::Item {
  std::shared_ptr<clsIxoCtrl> controller;
  /// The name of its section.
  QString section;
};

void WorkspaceConnector::Connect(const WorkspaceContent& content) {
  ProgressGauge& gauge = parts_.prompts.Gauge();
  gauge.ShowGage(QStringLiteral("Open Controllers"));
  gauge.SetGageMax(static_cast<qint32>(content.sectionCount));
  gauge.CancelEnable(true);
  std::vector<Item> items;
  std::vector<std::shared_ptr<clsIxoCtrl>> records;
  for (const WorkspaceSection& section : content.sections) {
    records.push_back(std::make_shared<clsIxoCtrl>(section.controller));
    items.push_back({records.back(), section.name});
  }
  const std::unique_ptr<ControllerOpening> opening = parts_.connector.OpenControllers(records);
  for (size_t position = 0; position < items.size(); ++position) {
    ConnectItem(items[position], opening.get(), position);
    parts_.host.LetEventsRun();
    gauge.IncrementGageValue({});
    if (parts_.prompts.IsCancelled()) {
      if (opening && !parts_.prompts.IsEnding()) {
        TakeOpened(items, *opening, position + 1);
      }
      break;
    }
  }
}

void WorkspaceConnector::ConnectItem(const Item& item, ControllerOpening* opening, size_t position) {
  const QString name = item.controller->CtrlName();
  parts_.prompts.Gauge().SetGageLabel(QStringLiteral("Connect Controller(") + name + QStringLiteral(")."));
  // Connecting may block: the name has to be readable before.
  parts_.prompts.Gauge().PaintGage();
  parts_.host.LetPaintingRun();
  const ConnectOutcome result = TakeController(item, opening, position);
  if (result || (result.number == error::kCancelled && parts_.prompts.IsCancelled())) {
    return;
  }
  ShowFailed(*item.controller, item.section);
  ShowFailure(
      parts_.prompts, parts_.host,
      QStringLiteral("Failed in connecting to the controller( ") + name + QStringLiteral(" )."),
      {.item = name.isEmpty() ? item.section : name, .reason = ReasonOf(result.number, result.reason)});
}

ConnectOutcome WorkspaceConnector::TakeController(const Item& item, ControllerOpening* opening,
                                                  size_t position) {
  ConnectOutcome result = parts_.connector.ConnectController(item.controller, opening, position);
  if (result && IsWorkspaceShown()) {
    static_cast<void>(parts_.connector.Display().AddControllerItem(*item.controller, false));
  }
  return result;
}

void WorkspaceConnector::TakeOpened(const std::vector<Item>& items, ControllerOpening& opening,
                                    size_t first) {
  opening.Cancel();
  for (size_t position = first; position < items.size(); ++position) {
    static_cast<void>(TakeController(items[position], &opening, position));
  }
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
