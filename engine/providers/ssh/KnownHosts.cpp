#include "engine/providers/ssh/KnownHosts.h"

#include "base/RunTimeError.h"
#include "engine/providers/ssh/HostKeyText.h"
#include "engine/providers/ssh/SshPlace.h"
#include "platform/OwnFile.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QMessageAuthenticationCode>
#include <QProcess>
#include <QRandomGenerator>

#include <utility>

namespace trevane {
namespace {

QByteArray NameOf(const QString& host, quint16 port) {
  const QByteArray name = host.toLower().toUtf8();
  return port == 22 ? name : '[' + name + "]:" + QByteArray::number(port);
}

/// As other programs hide the names of hosts: "|1|salt|hash".
QByteArray Hashed(const QByteArray& name) {
  QByteArray salt(20, Qt::Uninitialized);
  for (char& byte : salt) {
    byte = static_cast<char>(QRandomGenerator::system()->bounded(256));
  }
  const QByteArray hash = QMessageAuthenticationCode::hash(name, salt, QCryptographicHash::Sha1);
  return "|1|" + salt.toBase64() + '|' + hash.toBase64();
}

/// The word in front of a marked line, which is removed: "@revoked".
QByteArray TakeMark(QByteArray& text) {
  if (!text.startsWith('@')) {
    return {};
  }
  const qsizetype blank = text.indexOf(' ');
  const QByteArray mark = blank < 0 ? text : text.first(blank);
  text = blank < 0 ? QByteArray() : text.sliced(blank + 1).trimmed();
  return mark;
}

/// Users who want no host key to be kept let their file be the system's empty device, or a link to it.
bool KeepsNothing(const QString& file) {
  const QString device = QProcess::nullDevice();
  return file == device || QFileInfo(file).canonicalFilePath() == device;
}

}  // namespace

struct KnownHosts::Entry {
  SshKey key;
  bool isRevoked = false;
  Line line;
};

KnownHosts::KnownHosts(const SshPlace& place, const QString& host, quint16 port)
    : name_(NameOf(host, port)), usersFile_(place.knownHosts) {
  Read(place.knownHosts);
  for (const QString& file : place.moreKnownHosts) {
    Read(file);
  }
}

KnownHosts::~KnownHosts() = default;

void KnownHosts::Read(const QString& file) {
  // Without a home there is no file either.
  if (file.isEmpty() || KeepsNothing(file)) {
    return;
  }
  const ownfile::Content content = ownfile::Read(file);
  if (content.state == ownfile::State::Missing) {
    return;
  }
  if (content.state != ownfile::State::Read) {
    throw RunTimeError(
        error::kAccessDenied,
        QStringLiteral("The file of known host keys %1 cannot be read: %2").arg(file, content.reason));
  }
  int number = 0;
  for (const QByteArray& each : content.bytes.split('\n')) {
    QByteArray text = each;
    text.replace('\t', ' ');
    ReadLine(text.trimmed(), {file, ++number});
  }
  if (file == usersFile_) {
    hashesNames_ = content.bytes.startsWith("|1|") || content.bytes.contains("\n|1|");
    endsWithoutNewLine_ = !content.bytes.isEmpty() && !content.bytes.endsWith('\n');
  }
}

void KnownHosts::ReadLine(const QByteArray& line, const Line& where) {
  QByteArray text = line;
  const QByteArray mark = TakeMark(text);
  const bool isRevoked = mark == "@revoked";
  if (text.isEmpty() || text.startsWith('#') || (!mark.isEmpty() && !isRevoked)) {
    return;
  }
  ssh_knownhosts_entry* entry = nullptr;
  if (ssh_known_hosts_parse_line(name_.constData(), text.constData(), &entry) != SSH_OK) {
    return;
  }
  entries_.push_back({SshKey(std::exchange(entry->publickey, nullptr)), isRevoked, where});
  ssh_knownhosts_entry_free(entry);
}

QByteArrayList KnownHosts::Types() const {
  QByteArrayList types;
  for (const Entry& entry : entries_) {
    const QByteArray type = KeyTypeOf(entry.key.get());
    if (!entry.isRevoked && !types.contains(type)) {
      types.append(type);
    }
  }
  return types;
}

KnownHosts::Judgement KnownHosts::Judge(ssh_key key) const {
  const Entry* same = nullptr;
  const Entry* ofType = nullptr;
  const Entry* other = nullptr;
  for (const Entry& entry : entries_) {
    const bool isSame = ssh_key_cmp(entry.key.get(), key, SSH_KEY_CMP_PUBLIC) == 0;
    if (isSame && entry.isRevoked) {
      return {Verdict::Revoked, KeyTypeOf(key), FingerprintOf(key), entry.line};
    }
    if (entry.isRevoked) {
      continue;
    }
    if (isSame && same == nullptr) {
      same = &entry;
    } else if (other == nullptr) {
      other = &entry;
    }
    if (ofType == nullptr && KeyTypeOf(entry.key.get()) == KeyTypeOf(key)) {
      ofType = &entry;
    }
  }
  if (same != nullptr) {
    return {Verdict::Known, KeyTypeOf(key), FingerprintOf(key), same->line};
  }
  if (const Entry* const old = ofType != nullptr ? ofType : other) {
    return {Verdict::Changed, KeyTypeOf(old->key.get()), FingerprintOf(old->key.get()), old->line};
  }
  return {};
}

std::optional<QString> KnownHosts::Add(ssh_key key) const {
  if (KeepsNothing(usersFile_)) {
    return QStringLiteral("%1 keeps nothing").arg(usersFile_);
  }
  if (!ownfile::MakePrivateFolder(QFileInfo(usersFile_).absolutePath())) {
    return QStringLiteral("The folder of the file cannot be made");
  }
  QFile file;
  if (!ownfile::OpenForAppending(file, usersFile_)) {
    return file.errorString().isEmpty() ? QStringLiteral("The file cannot be written") : file.errorString();
  }
  const QByteArray line = (endsWithoutNewLine_ ? "\n" : "") + (hashesNames_ ? Hashed(name_) : name_) + ' ' +
                          KeyTypeOf(key) + ' ' + Base64Of(key) + '\n';
  // Appended in one piece: other programs add lines, too.
  if (file.write(line) != line.size()) {
    return file.errorString();
  }
  return std::nullopt;
}

}  // namespace trevane
