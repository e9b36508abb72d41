#include "app/session/CreateEngineSession.h"

#include "app/session/AppServices.h"
#include "base/RunTimeError.h"
#include "engine/controllers/EngineSession.h"
#include "engine/model/IxoController.h"
#include "engine/model/IxoControllers.h"
#include "engine/model/IxoEngine.h"
#include "engine/model/IxoWorkspace.h"
#include "engine/model/IxoWorkspaces.h"
#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"

namespace trevane {

namespace {

/// The result of a step; a failing one gives an empty result and its reason.
template <typename Step>
auto TryStep(QString& reason, Step step) -> decltype(step()) {
  reason.clear();
  try {
    return step();
  } catch (const RunTimeError& failure) {
    reason = failure.Description();
    return {};
  }
}

}  // namespace

bool CreateEngineSession(EngineSession& session, AppServices& services) {
  QString reason;
  const auto fail = [&](const QString& message) {
    services.prompts.ShowMessage(
        FailureMessage(message, {.item = {}, .reason = reason}, PromptIcon::Critical));
    session.gIxoWorkspace.reset();
    session.gIxoEngine.reset();
    return false;
  };

  session.gIxoEngine = TryStep(reason, [&] { return services.createEngine(); });
  if (!session.gIxoEngine) {
    return fail(QStringLiteral("Failed in creating a IxoEngine object."));
  }

  session.gIxoWorkspace = TryStep(reason, [&]() -> std::shared_ptr<IxoWorkspace> {
    const auto workspaces = session.gIxoEngine->Workspaces();
    return workspaces ? workspaces->Item(qint16{0}) : nullptr;
  });
  if (!session.gIxoWorkspace) {
    return fail(QStringLiteral("Failed in getting a Default IxoWorkspace object."));
  }

  session.gIxoControllers = TryStep(reason, [&] { return session.gIxoWorkspace->Controllers(); });
  if (!session.gIxoControllers) {
    return fail(QStringLiteral("Failed in getting a IxoControllers object."));
  }

  const QString provider = QStringLiteral("IxoProv.LocalFile");
  const std::shared_ptr<IxoController> controller = TryStep(reason, [&] {
    return session.gIxoWorkspace->AddController(QStringLiteral(""), provider, QString(), QString());
  });
  if (!controller) {
    return fail(QStringLiteral("Failed in creating a LocalFile IxoController object."));
  }

  session.gLocalCtrlName = TryStep(reason, [&] { return controller->Name(); });
  const auto record = std::make_shared<clsIxoCtrl>();
  record->SetCtrlIdx(TryStep(reason, [&] { return controller->Index(); }));
  record->SetProvName(provider);
  record->SetRealCtrlName(TryStep(reason, [&] { return controller->Name(); }));
  try {
    session.gIxoCtrls().Add(record);
  } catch (const RunTimeError&) {
    // A session without its first record still browses.
  }
  return true;
}

void ReleaseEngine(EngineSession& session) {
  session.gIxoWorkspace.reset();
  session.gIxoEngine.reset();
}

}  // namespace trevane
