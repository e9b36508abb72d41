#pragma once

#include "engine/files/FileSystem.h"
#include "engine/files/NameLadder.h"
#include "engine/providers/sftp/SftpConnector.h"
#include "engine/providers/sftp/SftpNames.h"
#include "engine/providers/sftp/SftpSession.h"
#include "engine/providers/sftp/SftpSettings.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QHash>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace trevane::sftp {

class Unflushed;

/// An item by its path.
struct Place {
  /// For texts; empty for the top.
  QString text;
  /// As the server has it: "/" for the top, and of its folder.
  QByteArray path;
  QByteArray folder;
  /// The last name; empty for the top.
  QString name;

  [[nodiscard]] bool IsTop() const noexcept { return name.isEmpty(); }
  /// The last name as the server has it.
  [[nodiscard]] QByteArray OwnName() const { return path.sliced(path.lastIndexOf('/') + 1); }
};

/// The server of one file system: its line, which is made anew after an idle one was closed, and what is
/// known of it. One thread's alone.
class Server {
 public:
  Server(std::unique_ptr<SftpConnector> connector, const SftpSettings& settings,
         std::shared_ptr<CallControl> control);
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// The line, for a call about that path.
  [[nodiscard]] const std::shared_ptr<Session>& Line(const QString& subject);
  /// Null while an idle line is closed.
  [[nodiscard]] Session* LineIfOpen() const noexcept { return line_.get(); }

  [[nodiscard]] const Names& NamesOf() const noexcept { return names_; }
  [[nodiscard]] SftpConnector& Connector() noexcept { return *connector_; }
  /// What was learnt of the names that servers take, for all of them.
  [[nodiscard]] static LearntNaming& Naming();
  /// The key of this one there.
  [[nodiscard]] QString Key() const;

  /// Fails with error::kInvalidName.
  [[nodiscard]] Place At(const QString& path) const;

  /// As the server shows it, without following a last link; nothing when it is missing.
  [[nodiscard]] std::optional<Attributes> Look(const Place& place);
  [[nodiscard]] static std::optional<Attributes> TakeLook(Request& request, const Place& place);
  /// With all links followed.
  [[nodiscard]] std::optional<Attributes> Follow(const Place& place);
  [[nodiscard]] FileEntry EntryAt(const Place& place, const Attributes& own);

  /// The path of a folder with all links followed, which is remembered for a moment.
  [[nodiscard]] QByteArray Canonical(const QByteArray& folder, const QString& text);
  /// The same with the request under way, so that it overlaps others: empty when it is known.
  [[nodiscard]] Request AskCanonical(const QByteArray& folder);
  [[nodiscard]] QByteArray TakeCanonical(Request& request, const QByteArray& folder, const QString& text);
  /// Takes the answer, where one is under way. A refusal is told when the path is asked for.
  void LearnCanonical(Request& request, const QByteArray& folder);
  void ForgetCanonical() { canonical_.clear(); }

  /// The identity of an item in a folder with that canonical path; of the top for an empty name.
  [[nodiscard]] FileIdentity IdentityOf(const QByteArray& canonicalFolder, const QByteArray& name) const;

  /// Nothing where the server does not tell.
  struct Space {
    quint64 free = 0;
    quint64 all = 0;
    quint64 device = 0;
  };
  [[nodiscard]] std::optional<Space> SpaceAt(const QByteArray& path);

  /// What the failure of storing something at the path means: servers have no number for a full disk.
  [[nodiscard]] RunTimeError StoringError(const StatusAnswer& answer, const Place& place);

  [[nodiscard]] Unflushed& Written() noexcept { return *unflushed_; }
  /// Of items that could not be removed.
  [[nodiscard]] std::vector<Leftover>& Leftovers() noexcept { return leftovers_; }

  /// As FileSystem::Idle.
  [[nodiscard]] qint64 Idle(qint64 milliseconds) noexcept;

 private:
  void Connect();
  void Remember(const QByteArray& folder, const QByteArray& canonical);

  struct Known {
    QByteArray path;
    qint64 at = 0;
  };

  std::unique_ptr<SftpConnector> connector_;
  QString host_;
  Names names_;
  std::shared_ptr<CallControl> control_;
  QString serverKey_;
  std::shared_ptr<Session> line_;
  QHash<QByteArray, Known> canonical_;
  QElapsedTimer clock_;
  std::unique_ptr<Unflushed> unflushed_;
  std::vector<Leftover> leftovers_;
};

}  // namespace trevane::sftp
