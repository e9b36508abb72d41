#pragma once

#include <QObject>

namespace trevane {

/// Tells when the system asks the program to end in good order: on Linux SIGTERM, SIGINT and SIGHUP, which
/// would otherwise end it without saving anything. On Windows such a request closes the window by itself. One
/// at a time.
class TerminationRequests final : public QObject {
  Q_OBJECT

 public:
  TerminationRequests();
  ~TerminationRequests() override;

 Q_SIGNALS:
  /// Emitted from the event loop, at most once a request.
  void Requested();
};

}  // namespace trevane
