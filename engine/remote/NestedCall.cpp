#include "engine/remote/NestedCall.h"

#include "engine/files/ProviderError.h"

#include <utility>

namespace trevane {
namespace {

NestedCallHandler& Handler() {
  static NestedCallHandler handler;
  return handler;
}

}  // namespace

NestedCallHandler SetNestedCallHandler(NestedCallHandler handler) {
  return std::exchange(Handler(), std::move(handler));
}

void RefuseNestedCall(const QString& what, const QString& path) {
  if (Handler()) {
    Handler()(what);
  }
  Fail(providererror::kBusy, QStringLiteral("Another call is being waited for"), path);
}

}  // namespace trevane
