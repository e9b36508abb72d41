#pragma once

#include "engine/providers/ssh/SshHandles.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

struct SshPlace;

/// What the files of known hosts hold of one host, as they are now. Certificates of authorities are not used:
/// their lines are left out.
class KnownHosts final {
 public:
  /// Where a line stands.
  struct Line {
    QString file;
    int number = 0;
  };
  enum class Verdict { Known, Unknown, Changed, Revoked };
  struct Judgement {
    Verdict verdict = Verdict::Unknown;
    /// Of a changed key the old one, and of each verdict but Unknown where it stands.
    QByteArray oldType = {};
    QString oldFingerprint = {};
    Line line = {};
  };

  /// Files that are missing hold nothing, nor does the system's empty device or a link to it. Fails with
  /// error::kAccessDenied, the file and the reason where one that is there cannot be read: it may hold that a
  /// key was changed or revoked.
  KnownHosts(const SshPlace& place, const QString& host, quint16 port);
  ~KnownHosts();
  KnownHosts(const KnownHosts&) = delete;
  KnownHosts& operator=(const KnownHosts&) = delete;

  /// The types of the host's keys ("ssh-ed25519").
  [[nodiscard]] QByteArrayList Types() const;
  /// A host with keys of other types alone has changed: each server that has the known one would have shown
  /// it.
  [[nodiscard]] Judgement Judge(ssh_key key) const;
  /// Adds a line to the user's file, with a hashed name where others there have one. Nothing, or why it
  /// could not be stored.
  [[nodiscard]] std::optional<QString> Add(ssh_key key) const;

 private:
  struct Entry;

  void Read(const QString& file);
  void ReadLine(const QByteArray& text, const Line& line);

  /// As it stands in the files: "cell4", "[cell4]:2222".
  const QByteArray name_;
  const QString usersFile_;
  bool hashesNames_ = false;
  bool endsWithoutNewLine_ = false;
  std::vector<Entry> entries_;
};

}  // namespace trevane
