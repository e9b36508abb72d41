#pragma once

namespace trevane {

class EngineSession;
struct AppServices;

/// Creates the engine, its default workspace, the controller collection and the local-file controller, and
/// registers the latter at position 1. The first object that is missing ends it with its own message and
/// false; no engine object is left then.
[[nodiscard]] bool CreateEngineSession(EngineSession& session, AppServices& services);

/// Takes the engine down; the registry and the remembered controllers stay.
void ReleaseEngine(EngineSession& session);

}  // namespace trevane
