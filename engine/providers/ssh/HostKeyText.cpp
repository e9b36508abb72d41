#include "engine/providers/ssh/HostKeyText.h"

namespace trevane {

QString FingerprintOf(ssh_key key) {
  unsigned char* hash = nullptr;
  size_t size = 0;
  if (ssh_get_publickey_hash(key, SSH_PUBLICKEY_HASH_SHA256, &hash, &size) != SSH_OK) {
    return {};
  }
  const QByteArray text = TakeText(ssh_get_fingerprint_hash(SSH_PUBLICKEY_HASH_SHA256, hash, size));
  ssh_clean_pubkey_hash(&hash);
  return QString::fromLatin1(text);
}

QByteArray KeyTypeOf(ssh_key key) {
  return ssh_key_type_to_char(ssh_key_type(key));
}

QByteArray Base64Of(ssh_key key) {
  char* text = nullptr;
  return ssh_pki_export_pubkey_base64(key, &text) == SSH_OK ? TakeText(text) : QByteArray();
}

}  // namespace trevane
