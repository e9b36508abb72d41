#include "engine/controllers/ControllerConnector.h"

#include "base/RunTimeError.h"
#include "engine/controllers/OpenControllerRoot.h"
#include "engine/model/IxoController.h"
#include "engine/model/IxoFile.h"
#include "views/addresses/Addresses.h"

#include <QStringList>

#include <vector>

namespace trevane {

namespace {

/// "The directory name is invalid" of the system's numbers.
constexpr qint32 kNoFolder = error::kWin32Error + 267;

RunTimeError NoSession() {
  return {-1, QStringLiteral("There is no engine session")};
}

ControllerRequest RequestOf(const clsIxoCtrl& ctrl) {
  return {ctrl.CtrlName(), ctrl.ProvName(), ctrl.MachineName(), ctrl.CtrlOption(), ctrl.Root()};
}

bool IsRegistered(EngineSession& session, const QString& name) {
  for (const auto& record : session.gIxoCtrls()) {
    if (EqualIgnoringCase(record->RealCtrlName(), name)) {
      return true;
    }
  }
  return false;
}

/// True when the engine no longer has it.
bool IsRemoved(IxoControllers& controllers, const QString& name) {
  try {
    controllers.Remove(name);
    return true;
  } catch (const RunTimeError& failure) {
    return failure.Number() == error::kNoSuchKey;
  }
}

/// Removes from the engine the controllers that failed to connect and that no record has. One that cannot be
/// removed stays, and is tried again the next time.
void RemoveLeft(EngineSession& session, const std::function<bool(const LeftController&)>& isMeant) {
  std::erase_if(session.leftControllers, [&](const LeftController& left) {
    return isMeant(left) && !IsRegistered(session, left.name) &&
           IsRemoved(*session.gIxoControllers, left.name);
  });
}

}  // namespace

/// The steps of connecting that were done, for those that have to be undone.
struct ControllerConnector::Progress {
  std::shared_ptr<IxoController> controller;
  bool opened = false;
  bool registered = false;
};

void ControllerConnector::Connect(const std::shared_ptr<clsIxoCtrl>& ctrl, const Opener& open,
                                  Progress& progress) const {
  if (!session_.gIxoWorkspace || !session_.gIxoControllers) {
    throw NoSession();
  }
  // Otherwise a controller that failed under this name would keep it, and the engine would give another.
  RemoveLeft(session_, [&name = ctrl->CtrlName()](const LeftController& left) {
    return EqualIgnoringCase(left.asked, name) || EqualIgnoringCase(left.name, name);
  });
  progress.controller = open();
  if (progress.controller) {
    progress.opened = true;
    ctrl->SetRealCtrlName(progress.controller->Name());
    ctrl->SetCtrlIdx(progress.controller->Index());
    ctrl->SetNotice(progress.controller->Notice());
    // The engine keeps it open.
    progress.controller.reset();
  }
  const auto root = OpenControllerRoot(*session_.gIxoControllers, ctrl->CtrlIdx(), ctrl->Root());
  if (!root) {
    throw RunTimeError(0, QStringLiteral("The root cannot be opened: ") + ctrl->Root());
  }
  if ((root->Attribute() & attribute::kFolder) == 0) {
    throw RunTimeError(kNoFolder, QStringLiteral("The root is no folder: ") + ctrl->Root());
  }
  session_.gIxoCtrls().Add(ctrl);
  progress.registered = true;
  if (!display_.AddControllerNode(*ctrl, false)) {
    throw RunTimeError(0, QStringLiteral("The controller cannot be shown: ") + ctrl->RealCtrlName());
  }
  log_.LogEvent(QStringLiteral("CONNECT"), ctrl->RealCtrlName(), ctrl->ProvName(), ctrl->MachineName(),
                ctrl->CtrlOption());
}

void ControllerConnector::Undo(const clsIxoCtrl& ctrl, const Progress& progress) const {
  bool left = progress.opened;
  if (progress.controller) {
    try {
      session_.gIxoControllers->Remove(ctrl.CtrlIdx());
      left = false;
    } catch (const RunTimeError&) {
      // It stays open in the engine.
    }
  }
  if (progress.registered) {
    try {
      // A number is a position here. Indexes count from 1 and are never used again, so that theirs is the
      // record's own position or one behind it: never the local controller's.
      session_.gIxoCtrls().Remove(ctrl.CtrlIdx());
    } catch (const RunTimeError&) {
      // There is no record at that position.
    }
  }
  if (left) {
    const QString& name = ctrl.RealCtrlName();
    session_.leftControllers.push_back({ctrl.CtrlName(), name.isEmpty() ? ctrl.CtrlName() : name});
  }
}

ConnectOutcome ControllerConnector::ConnectController(const std::shared_ptr<clsIxoCtrl>& ctrl) const {
  return ConnectWith(ctrl, [this, &ctrl] {
    return session_.gIxoWorkspace->AddController(ctrl->CtrlName(), ctrl->ProvName(), ctrl->MachineName(),
                                                 ctrl->CtrlOption());
  });
}

std::unique_ptr<ControllerOpening> ControllerConnector::OpenControllers(
    const std::vector<std::shared_ptr<clsIxoCtrl>>& records) const {
  if (!session_.gIxoWorkspace) {
    return nullptr;
  }
  std::vector<ControllerRequest> requests;
  requests.reserve(records.size());
  for (const std::shared_ptr<clsIxoCtrl>& ctrl : records) {
    requests.push_back(RequestOf(*ctrl));
  }
  return session_.gIxoWorkspace->OpenControllers(requests);
}

ConnectOutcome ControllerConnector::ConnectController(const std::shared_ptr<clsIxoCtrl>& ctrl,
                                                      ControllerOpening* opening, size_t position) const {
  return ConnectWith(ctrl, [opening, position] {
    if (opening == nullptr) {
      throw NoSession();
    }
    return opening->Take(position);
  });
}

ConnectOutcome ControllerConnector::ConnectWith(const std::shared_ptr<clsIxoCtrl>& ctrl,
                                                const Opener& open) const {
  ConnectOutcome result;
  Progress progress;
  try {
    Connect(ctrl, open, progress);
  } catch (const RunTimeError& failure) {
    result = {ResultCode(failure), failure.Description()};
    Undo(*ctrl, progress);
  }
  display_.ClearProgressText();
  return result;
}

ConnectOutcome ControllerConnector::DisconnectController(const QString& nodePath, const QString& ctrlName,
                                                         DisconnectFrom from) const {
  try {
    const bool connected = !display_.IsErrorNode(nodePath);
    if (connected) {
      if (!session_.gIxoControllers) {
        throw NoSession();
      }
      session_.gIxoControllers->Remove(ctrlName);
      session_.gIxoCtrls().Remove(ctrlName);
    }
    display_.RemoveControllerNode(nodePath);
    if (from == DisconnectFrom::List) {
      display_.RemoveControllerItem(ctrlName);
    }
    if (connected) {
      log_.LogEvent(QStringLiteral("DISCONNECT"), ctrlName);
    }
    return {};
  } catch (const RunTimeError& failure) {
    return {ResultCode(failure), failure.Description()};
  }
}

ConnectOutcome ControllerConnector::DisconnectAllControllers() const {
  QStringList names;
  for (const auto& record : session_.gIxoCtrls()) {
    if (!EqualIgnoringCase(record->RealCtrlName(), session_.gLocalCtrlName)) {
      names += record->RealCtrlName();
    }
  }
  for (const QString& name : names) {
    ConnectOutcome result =
        DisconnectController(JoinAddress(kWorkspaceAddress.toString(), name), name, DisconnectFrom::Tree);
    if (!result) {
      return result;
    }
  }
  if (session_.gIxoControllers) {
    RemoveLeft(session_, [](const LeftController&) { return true; });
  }
  display_.RemoveErrorNodes();
  return {};
}

}  // namespace trevane
