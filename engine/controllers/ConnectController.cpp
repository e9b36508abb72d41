#include "engine/controllers/ConnectController.h"

#include "base/RunTimeError.h"
#include "engine/controllers/OpenControllerRoot.h"
#include "engine/model/IxoController.h"
#include "engine/model/IxoFile.h"
#include "views/addresses/Addresses.h"

#include <QStringList>

#include <functional>
#include <vector>

namespace trevane {

namespace {

/// "The directory name is invalid" of the system's numbers.
constexpr qint32 kNoFolder = error::kWin32Error + 267;

RunTimeError NoSession() {
  return {-1, QStringLiteral("There is no engine session")};
}

bool IsRegistered(EngineSession& session, const QString& name) {
  for (const auto& record : session.gIxoCtrls()) {
    if (EqualIgnoringCase(record->RealCtrlName(), name)) {
      return true;
    }
  }
  return false;
}

/// True when the engine does not have it any more.
bool IsRemoved(IxoControllers& controllers, const QString& name) {
  try {
    controllers.Remove(name);
    return true;
  } catch (const RunTimeError& failure) {
    return failure.Number() == error::kNoSuchKey;
  }
}

/// Takes those controllers out of the engine that failed to connect and that no record has. One that it does
/// not give back stays, and is tried again the next time.
void RemoveLeft(EngineSession& session, const std::function<bool(const LeftController&)>& isMeant) {
  std::erase_if(session.leftControllers, [&](const LeftController& left) {
    return isMeant(left) && !IsRegistered(session, left.name) &&
           IsRemoved(*session.gIxoControllers, left.name);
  });
}

/// How far connecting got, for what has to be undone.
struct Progress {
  std::shared_ptr<IxoController> controller;
  bool opened = false;
  bool registered = false;
};

void Connect(const ConnectionParts& parts, const std::shared_ptr<clsIxoCtrl>& ctrl, Progress& progress) {
  EngineSession& session = parts.session;
  if (!session.gIxoWorkspace || !session.gIxoControllers) {
    throw NoSession();
  }
  // Else what failed under this name would hold it, and the engine give another.
  RemoveLeft(session, [&name = ctrl->CtrlName()](const LeftController& left) {
    return EqualIgnoringCase(left.asked, name) || EqualIgnoringCase(left.name, name);
  });
  progress.controller = session.gIxoWorkspace->AddController(ctrl->CtrlName(), ctrl->ProvName(),
                                                             ctrl->MachineName(), ctrl->CtrlOption());
  if (progress.controller) {
    progress.opened = true;
    ctrl->SetRealCtrlName(progress.controller->Name());
    ctrl->SetCtrlIdx(progress.controller->Index());
    // The engine keeps it open.
    progress.controller.reset();
  }
  const auto root = OpenControllerRoot(*session.gIxoControllers, ctrl->CtrlIdx(), ctrl->Root());
  if (!root) {
    throw RunTimeError(0, QStringLiteral("The root cannot be opened: ") + ctrl->Root());
  }
  if ((root->Attribute() & attribute::kFolder) == 0) {
    throw RunTimeError(kNoFolder, QStringLiteral("The root is no folder: ") + ctrl->Root());
  }
  session.gIxoCtrls().Add(ctrl);
  progress.registered = true;
  if (!parts.views.AddControllerNode(*ctrl, false)) {
    throw RunTimeError(0, QStringLiteral("The controller cannot be shown: ") + ctrl->RealCtrlName());
  }
  parts.log.LogEvent(QStringLiteral("CONNECT"), ctrl->RealCtrlName(), ctrl->ProvName(), ctrl->MachineName(),
                     ctrl->CtrlOption());
}

void Undo(EngineSession& session, const clsIxoCtrl& ctrl, const Progress& progress) {
  bool left = progress.opened;
  if (progress.controller) {
    try {
      session.gIxoControllers->Remove(ctrl.CtrlIdx());
      left = false;
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
  if (left) {
    const QString& name = ctrl.RealCtrlName();
    session.leftControllers.push_back({ctrl.CtrlName(), name.isEmpty() ? ctrl.CtrlName() : name});
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
      if (!parts.session.gIxoControllers) {
        throw NoSession();
      }
      parts.session.gIxoControllers->Remove(ctrlName);
      parts.session.gIxoCtrls().Remove(ctrlName);
    }
    parts.views.RemoveControllerNode(nodePath);
    if (from == DisconnectFrom::List) {
      parts.views.RemoveControllerItem(ctrlName);
    }
    if (connected) {
      parts.log.LogEvent(QStringLiteral("DISCONNECT"), ctrlName);
    }
    return {};
  } catch (const RunTimeError& failure) {
    return {ResultCode(failure), failure.Description()};
  }
}

ConnectOutcome DisconnectAllControllers(const ConnectionParts& parts) {
  QStringList names;
  for (const auto& record : parts.session.gIxoCtrls()) {
    if (!EqualIgnoringCase(record->RealCtrlName(), parts.session.gLocalCtrlName)) {
      names += record->RealCtrlName();
    }
  }
  for (const QString& name : names) {
    ConnectOutcome result = DisconnectController(parts, JoinAddress(kWorkspaceAddress.toString(), name), name,
                                                 DisconnectFrom::Tree);
    if (!result) {
      return result;
    }
  }
  if (parts.session.gIxoControllers) {
    RemoveLeft(parts.session, [](const LeftController&) { return true; });
  }
  parts.views.RemoveErrorNodes();
  return {};
}

}  // namespace trevane
