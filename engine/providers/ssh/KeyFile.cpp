#include "engine/providers/ssh/KeyFile.h"

#include "platform/OwnFile.h"
#include "platform/Secret.h"

#include <QFile>

namespace trevane {
namespace {

/// Remembers that a passphrase is asked for, and gives none.
int RefusePassphrase(const char* /*prompt*/, char* /*answer*/, size_t /*size*/, int /*echo*/, int /*verify*/,
                     void* wasAsked) {
  *static_cast<bool*>(wasAsked) = true;
  return -1;
}

SshKey Import(const QByteArray& content, const char* passphrase, bool& wasAsked) {
  ssh_key key = nullptr;
  // Without a function of ours the library underneath asks on the terminal.
  if (ssh_pki_import_privkey_base64(content.constData(), passphrase, RefusePassphrase, &wasAsked, &key) !=
      SSH_OK) {
    return nullptr;
  }
  return SshKey(key);
}

}  // namespace

KeyFile::KeyFile(const QString& path) : path_(path) {
  ownfile::Content read = ownfile::Read(path);
  if (read.state != ownfile::State::Read) {
    whyNot_ = read.state == ownfile::State::Missing ? QStringLiteral("It is missing") : read.reason;
    return;
  }
  content_ = std::move(read.bytes);
  private_ = Import(content_, nullptr, isLocked_);
  public_ = ReadPublic();
  if (!private_ && !isLocked_) {
    whyNot_ = QStringLiteral("It holds no private key of a known kind");
  }
}

KeyFile::~KeyFile() {
  if (!content_.isEmpty()) {
    WipeBytes(content_.data(), static_cast<std::size_t>(content_.size()));
  }
}

SshKey KeyFile::ReadPublic() const {
  ssh_key key = nullptr;
  if (private_) {
    return ssh_pki_export_privkey_to_pubkey(private_.get(), &key) == SSH_OK ? SshKey(key) : nullptr;
  }
  // Some kinds have it in clear in front of what is locked; of the others it stands beside.
  for (const QString& file : {path_, path_ + QStringLiteral(".pub")}) {
    if (ssh_pki_import_pubkey_file(QFile::encodeName(file).constData(), &key) == SSH_OK) {
      return SshKey(key);
    }
  }
  return nullptr;
}

SshKey KeyFile::Unlock(const Secret& passphrase) const {
  bool wasAsked = false;
  return Import(content_, passphrase.CString(), wasAsked);
}

}  // namespace trevane
