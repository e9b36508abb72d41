#pragma once

#include "engine/controllers/ControllerDisplay.h"
#include "engine/controllers/EngineSession.h"
#include "engine/controllers/EventLog.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace trevane {

/// How connecting or disconnecting ended; true after success.
struct ConnectOutcome {
  /// 0 after success, otherwise the error's number, or -1 when that number is 0.
  qint32 number = 0;
  /// Why it failed.
  QString reason = {};

  [[nodiscard]] explicit operator bool() const noexcept { return number == 0; }
};

/// Where a request to disconnect came from.
enum class DisconnectFrom : qint16 { Tree = 1, List = 2 };

/// Connects and disconnects controllers: keeps engine, registry, views and log in step.
class ControllerConnector final {
 public:
  /// All of them outlive this object.
  ControllerConnector(EngineSession& session, ControllerDisplay& display, EventLog& log)
      : session_(session), display_(display), log_(log) {}
  ControllerConnector(const ControllerConnector&) = delete;
  ControllerConnector& operator=(const ControllerConnector&) = delete;

  /// Opens the controller that the record describes, and its root folder, registers and shows it and logs
  /// "CONNECT". `RealCtrlName` and `CtrlIdx` of the record are filled in.
  ///
  /// When the root cannot be opened or is no folder, or registering or showing fails, the controller stays
  /// open in the engine, until one of its name is connected next or all are disconnected.
  [[nodiscard]] ConnectOutcome ConnectController(const std::shared_ptr<clsIxoCtrl>& ctrl) const;

  /// Begins to open the controllers of several records together, to be connected one after the other with
  /// ConnectController. Null without an engine session, where connecting fails.
  [[nodiscard]] std::unique_ptr<ControllerOpening> OpenControllers(
      const std::vector<std::shared_ptr<clsIxoCtrl>>& records) const;

  /// As ConnectController for the record at that position of OpenControllers.
  [[nodiscard]] ConnectOutcome ConnectController(const std::shared_ptr<clsIxoCtrl>& ctrl,
                                                 ControllerOpening* opening, size_t position) const;

  /// Takes the controller out of the engine, the registry, the tree and, when the request came from there,
  /// the list, and logs "DISCONNECT". When a step fails those after it are not done. The node of a controller
  /// that never connected is taken out of the views, and nothing else happens.
  [[nodiscard]] ConnectOutcome DisconnectController(const QString& nodePath, const QString& ctrlName,
                                                    DisconnectFrom from) const;

  /// Disconnects every controller but the local one, in the order of the registry, and takes the nodes of
  /// those that never connected out of the tree, and those that failed out of the engine. When one cannot be
  /// disconnected those after it stay.
  [[nodiscard]] ConnectOutcome DisconnectAllControllers() const;

  [[nodiscard]] EngineSession& Session() const noexcept { return session_; }
  [[nodiscard]] ControllerDisplay& Display() const noexcept { return display_; }

 private:
  struct Progress;
  /// Has the engine open the controller.
  using Opener = std::function<std::shared_ptr<IxoController>()>;
  [[nodiscard]] ConnectOutcome ConnectWith(const std::shared_ptr<clsIxoCtrl>& ctrl, const Opener& open) const;
  void Connect(const std::shared_ptr<clsIxoCtrl>& ctrl, const Opener& open, Progress& progress) const;
  void Undo(const clsIxoCtrl& ctrl, const Progress& progress) const;

  EngineSession& session_;
  ControllerDisplay& display_;
  EventLog& log_;
};

}  // namespace trevane
