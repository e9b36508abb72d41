#include "engine/ConnectController.h"

#include "engine/OpenControllerRoot.h"
#include "engine/model/IxoController.h"
#include "engine/model/RunTimeError.h"
#include "views/addresses/Addresses.h"

#include <QStringList>

namespace trevane {

using namespace Qt::StringLiterals;

namespace {

RunTimeError NoSession() {
  return {-1, u"There is no engine session"_s};
}

/// How far connecting got, for what has to be undone.
struct Progress {
  std::shared_ptr<IxoController> controller;
  bool registered = false;
};

void Connect(const ConnectionParts& parts, const std::shared_ptr<clsIxoCtrl>& ctrl, Progress& progress) {
  EngineSession& session = parts.session;
  if (!session.gIxoWorkspace || !session.gIxoControllers)
    throw NoSession();
  progress.controller = session.gIxoWorkspace->AddController(ctrl->CtrlName(), ctrl->ProvName(),
                                                             ctrl->MachineName(), ctrl->CtrlOption());
  if (progress.controller) {
    ctrl->SetRealCtrlName(progress.controller->Name());
    ctrl->SetCtrlIdx(progress.controller->Index());
    // The engine keeps it open.
    progress.controller.reset();
  }
  if (!OpenControllerRoot(*session.gIxoControllers, ctrl->CtrlIdx(), ctrl->Root()))
    throw RunTimeError(0, u"The root cannot be opened: "_s + ctrl->Root());
  session.gIxoCtrls().Add(ctrl);
  progress.registered = true;
  if (!parts.views.AddControllerNode(*ctrl, false))
    throw RunTimeError(0, u"The controller cannot be shown: "_s + ctrl->RealCtrlName());
  parts.log.LogEvent(u"CONNECT"_s, ctrl->RealCtrlName(), ctrl->ProvName(), ctrl->MachineName(),
                     ctrl->CtrlOption());
}

void Undo(EngineSession& session, const clsIxoCtrl& ctrl, const Progress& progress) {
  if (progress.controller) {
    try {
      session.gIxoControllers->Remove(ctrl.CtrlIdx());
    } catch (const RunTimeError&) {
      // What the engine does not give back stays open in it.
    }
  }
  if (progress.registered) {
    try {
      // A number is a position here. Indexes count from 1 and are never used again, so that theirs is the
      // record's own position or one behind it: never the local controller's.
      session.gIxoCtrls().Remove(ctrl.CtrlIdx());
    } catch (const RunTimeError&) {
      // No record stands at that position.
    }
  }
}

}  // namespace

ConnectOutcome ConnectController(const ConnectionParts& parts, const std::shared_ptr<clsIxoCtrl>& ctrl) {
  ConnectOutcome result;
  Progress progress;
  try {
    Connect(parts, ctrl, progress);
  } catch (const RunTimeError& failure) {
    result = {ResultCode(failure), failure.Description()};
    Undo(parts.session, *ctrl, progress);
  }
  parts.views.ClearProgressText();
  return result;
}

ConnectOutcome DisconnectController(const ConnectionParts& parts, const QString& nodePath,
                                    const QString& ctrlName, DisconnectFrom from) {
  try {
    const bool connected = !parts.views.IsErrorNode(nodePath);
    if (connected) {
      if (!parts.session.gIxoControllers)
        throw NoSession();
      parts.session.gIxoControllers->Remove(ctrlName);
      parts.session.gIxoCtrls().Remove(ctrlName);
    }
    parts.views.RemoveControllerNode(nodePath);
    if (from == DisconnectFrom::List)
      parts.views.RemoveControllerItem(ctrlName);
    if (connected)
      parts.log.LogEvent(u"DISCONNECT"_s, ctrlName);
    return {};
  } catch (const RunTimeError& failure) {
    return {ResultCode(failure), failure.Description()};
  }
}

ConnectOutcome DisconnectAllControllers(const ConnectionParts& parts) {
  QStringList names;
  for (const auto& record : parts.session.gIxoCtrls()) {
    if (!EqualIgnoringCase(record->RealCtrlName(), parts.session.gLocalCtrlName))
      names += record->RealCtrlName();
  }
  for (const QString& name : names) {
    ConnectOutcome result = DisconnectController(parts, JoinAddress(kWorkspaceAddress.toString(), name), name,
                                                 DisconnectFrom::Tree);
    if (!result)
      return result;
  }
  parts.views.RemoveErrorNodes();
  return {};
}

}  // namespace trevane
