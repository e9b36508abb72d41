#include "engine/OpenControllerRoot.h"

#include "engine/model/IxoController.h"
#include "engine/model/RunTimeError.h"

namespace trevane {

std::shared_ptr<IxoFile> OpenControllerRoot(IxoControllers& controllers, qint32 ctrlIdx,
                                            const QString& root) {
  try {
    if (const auto controller = controllers.Item(ctrlIdx)) {
      if (auto folder = controller->OpenFile(root, QString())) {
        return folder;
      }
    }
  } catch (const RunTimeError&) {
    // The second way is open.
  }
  const QChar separator = root.indexOf(u'/') > root.indexOf(u'\\') ? u'/' : u'\\';
  const qsizetype last = root.lastIndexOf(separator);
  const QString parent = last < 0 ? QString() : root.left(last);
  const auto controller = controllers.Item(ctrlIdx);
  return controller ? controller->OpenFile(root.mid(last + 1), QStringLiteral("Path=") + parent) : nullptr;
}

}  // namespace trevane
