#pragma once

#include <QIcon>
#include <QString>

namespace trevane {

/// Makes the program's own pictures available under ":/trevane/icons/". Called by whoever shows one, as often
/// as they like: in a static library nobody else would register them.
void InitResources();

/// The picture of an image key ("F-OPEN", "COPY", "msg-question", "trevane") in `size` by `size` pixels, as a
/// path of the resource system. Sizes are 16, 24, 32, 48 and 64, for "trevane" also 128 and 256. Case does
/// not count.
[[nodiscard]] QString IconFile(const QString& imageKey, int size);

/// All sizes of an image key in one icon, so that the one that fits the screen is drawn; a null icon when the
/// key has no picture of ours.
[[nodiscard]] QIcon Icon(const QString& imageKey);

}  // namespace trevane
