#pragma once

#include <QByteArrayView>
#include <QtGlobal>

namespace trevane::curl {

/// What stands at this end of a data connection.
class Flow {
 public:
  Flow() = default;
  virtual ~Flow() = default;
  Flow(const Flow&) = delete;
  Flow& operator=(const Flow&) = delete;

  /// Takes what has come; false where it can take nothing now: it is offered again after CurlLine::Resume.
  [[nodiscard]] virtual bool Put(QByteArrayView bytes) = 0;
  /// Fills in at most `most` bytes; 0 at the end, kLater where there is nothing now.
  [[nodiscard]] virtual qsizetype Get(char* bytes, qsizetype most) = 0;

  static constexpr qsizetype kLater = -1;
};

}  // namespace trevane::curl
