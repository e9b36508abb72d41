#pragma once

#include <QByteArray>

#include <map>
#include <mutex>

namespace trevane {

/// The certificates that the user has accepted in this run and that could not be stored. Any thread's.
class AcceptedCertificates final {
 public:
  /// The fingerprint that was accepted for "host:port"; empty for none.
  [[nodiscard]] QByteArray Find(const QByteArray& name) const {
    const std::lock_guard lock(mutex_);
    const auto found = fingerprints_.find(name);
    return found == fingerprints_.end() ? QByteArray() : found->second;
  }
  void Keep(const QByteArray& name, const QByteArray& fingerprint) {
    const std::lock_guard lock(mutex_);
    fingerprints_.insert_or_assign(name, fingerprint);
  }

 private:
  mutable std::mutex mutex_;
  std::map<QByteArray, QByteArray> fingerprints_;
};

}  // namespace trevane
