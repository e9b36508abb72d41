#include "engine/controllers/OpenControllerRoot.h"

#include "base/RunTimeError.h"
#include "engine/model/IxoController.h"

#include <algorithm>
#include <optional>

namespace trevane {

namespace {

constexpr qint32 kUnreachable = error::kWin32Error + 53;
constexpr qint32 kConnectionLost = error::kWin32Error + 64;
constexpr qint32 kBusy = error::kWin32Error + 170;
constexpr qint32 kConnectionRefused = error::kWin32Error + 1225;
constexpr qint32 kNetworkUnreachable = error::kWin32Error + 1231;
constexpr qint32 kHostUnreachable = error::kWin32Error + 1232;

/// The machine does not answer or refuses: a second attempt would wait as long, or ask for the same password,
/// again.
constexpr qint32 kFailAnyName[] = {error::kDeviceNotReady, error::kAccessDenied, kUnreachable,
                                   kConnectionLost,        error::kTimeOut,      kBusy,
                                   error::kCancelled,      kConnectionRefused,   kNetworkUnreachable,
                                   kHostUnreachable,       error::kLogonFailure};

bool MayOpenByItsName(const RunTimeError& failure) {
  return std::ranges::find(kFailAnyName, failure.Number()) == std::ranges::end(kFailAnyName);
}

std::shared_ptr<IxoFile> Open(IxoControllers& controllers, qint32 ctrlIdx, const QString& name,
                              const QString& option) {
  const auto controller = controllers.Item(ctrlIdx);
  return controller ? controller->OpenFile(name, option) : nullptr;
}

}  // namespace

std::shared_ptr<IxoFile> OpenControllerRoot(IxoControllers& controllers, qint32 ctrlIdx,
                                            const QString& root) {
  std::optional<RunTimeError> first;
  try {
    if (auto folder = Open(controllers, ctrlIdx, root, QString())) {
      return folder;
    }
  } catch (const RunTimeError& failure) {
    if (!MayOpenByItsName(failure)) {
      throw;
    }
    first = failure;
  }
  const QChar separator = root.indexOf(u'/') > root.indexOf(u'\\') ? u'/' : u'\\';
  const qsizetype last = root.lastIndexOf(separator);
  const QString parent = last < 0 ? QString() : root.left(last);
  std::shared_ptr<IxoFile> folder;
  try {
    folder = Open(controllers, ctrlIdx, root.mid(last + 1), QStringLiteral("Path=") + parent);
  } catch (const RunTimeError&) {
    if (!first) {
      throw;
    }
  }
  if (!folder && first) {
    throw *first;
  }
  return folder;
}

}  // namespace trevane
