#pragma once

#include <QSet>
#include <QString>

#include <mutex>

namespace trevane::curl {

/// Which servers break data connections that resume the session of the control connection; others demand just
/// that, and no server tells. For as long as the program runs. Any thread's.
class SessionHabits final {
 public:
  [[nodiscard]] static SessionHabits& OfAll() {
    static SessionHabits habits;
    return habits;
  }

  [[nodiscard]] bool Resumes(const QString& server) const {
    const std::lock_guard lock(mutex_);
    return !unable_.contains(server);
  }
  void Note(const QString& server, bool resumes) {
    const std::lock_guard lock(mutex_);
    if (resumes) {
      unable_.remove(server);
    } else {
      unable_.insert(server);
    }
  }

 private:
  mutable std::mutex mutex_;
  QSet<QString> unable_;
};

}  // namespace trevane::curl
