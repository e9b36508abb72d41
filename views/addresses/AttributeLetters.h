#pragma once

#include <QString>

namespace trevane {

/// The letters of the attributes that are shown, in the order R, H, S, A.
[[nodiscard]] QString AttributeLetters(qint32 attributes);

/// Orders attributes as AttributeLetters orders their texts.
[[nodiscard]] quint8 AttributeSortKey(qint32 attributes);

}  // namespace trevane
