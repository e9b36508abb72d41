#pragma once

#include "platform/OpenWithProgram.h"

#include <QDeadlineTimer>
#include <QString>

#include <functional>
#include <memory>

namespace trevane {

class IxoEngine;
class LearntClock;
class ShellIcons;
class UserPrompts;
class Volumes;
class WindowWaiter;

/// The parts of the program that differ between a run and a test. All of them outlive the window.
struct AppServices {
  UserPrompts& prompts;
  Volumes& volumes;
  ShellIcons& shellIcons;
  /// Makes the engine; null or a RunTimeError when there is none.
  std::function<std::shared_ptr<IxoEngine>()> createEngine;
  /// False when another instance of this copy of the program is running.
  std::function<bool()> isFirstInstance;
  /// The preferred folder for settings and log, without a separator at its end.
  QString programFolder;
  /// The executable's name without extension.
  QString baseName;
  /// "major.minor.revision".
  QString version;
  /// Waits for controllers with threads of their own; null where there are none.
  WindowWaiter* waiter = nullptr;
  /// How long what was learnt of slow controllers holds; null where there are none.
  std::shared_ptr<LearntClock> learnt = nullptr;
  /// Tells the threads of all controllers to end, and waits for them, but not long.
  std::function<void()> stopControllers = [] {};
  /// The fallback folder, empty for none.
  QString userSettingsFolder = {};
  QString userLogFolder = {};
  /// The folder for files of controllers that are opened with programs of this computer; empty for none, and
  /// then they are not.
  QString fetchedFolder = {};
  std::function<OpenOutcome(const QString& path)> openWithProgram = &OpenWithProgram;
  /// Milliseconds, for the watching of those files.
  std::function<qint64()> fetchedClock = [] { return QDeadlineTimer::current().deadline(); };
};

}  // namespace trevane
