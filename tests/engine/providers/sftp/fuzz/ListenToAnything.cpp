#include "tests/engine/providers/sftp/fuzz/ListenToAnything.h"

#include "base/RunTimeError.h"
#include "engine/files/FileSystem.h"
#include "engine/files/HeldFolder.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/sftp/SftpFileSystem.h"
#include "engine/providers/sftp/SftpPacket.h"
#include "tests/engine/providers/sftp/OddServer.h"

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace trevane::sftp::test {
namespace {

using trevane::test::OddConnector;
using trevane::test::OddServer;

/// Takes the answers of a server from bytes.
class Script {
 public:
  explicit Script(const QByteArray& bytes) : rest_(bytes) {}

  [[nodiscard]] std::optional<OddServer::Packets> Next(PacketType asked, quint32 id) {
    constexpr std::array kKinds{PacketType::Status, PacketType::Handle, PacketType::Data,
                                PacketType::Name,   PacketType::Attrs,  PacketType::ExtendedReply};
    constexpr int kUsual = 4;
    if (rest_.isEmpty()) {
      return std::nullopt;
    }
    const auto choice = static_cast<size_t>(TakeByte()) % (kKinds.size() + kUsual);
    if (choice < kKinds.size() && asked == PacketType::Init) {
      // The version stands where answers have the id.
      return OddServer::Packets{Packet(PacketType::Version, 3)};
    }
    if (choice < kKinds.size()) {
      return OddServer::Packets{Packet(kKinds[choice], id)};
    }
    return choice == kKinds.size() ? std::optional(OddServer::Packets{TakeSome()}) : std::nullopt;
  }

 private:
  [[nodiscard]] quint8 TakeByte() {
    const auto byte = rest_.isEmpty() ? quint8{0} : static_cast<quint8>(rest_.front());
    rest_ = rest_.sliced(std::min<qsizetype>(1, rest_.size()));
    return byte;
  }
  [[nodiscard]] QByteArray TakeSome() {
    const auto size = std::min<qsizetype>(TakeByte(), rest_.size());
    const QByteArray some = rest_.first(size).toByteArray();
    rest_ = rest_.sliced(size);
    return some;
  }
  [[nodiscard]] QByteArray Packet(PacketType type, quint32 id) {
    const QByteArray body = TakeSome();
    QByteArray packet = PacketWriter(type, id).Take() + body;
    packet[3] = static_cast<char>(packet.size() - 4);
    packet[2] = static_cast<char>((packet.size() - 4) >> 8);
    return packet;
  }

  QByteArrayView rest_;
};

/// A failure is an answer like any other.
void Try(const std::function<void()>& work) {
  try {
    work();
  } catch (const RunTimeError&) {
  }
}

void UseAll(FileSystem& files) {
  const QString file = QStringLiteral("f");
  const QString folder = QStringLiteral("d");
  const QString other = QStringLiteral("f2");
  Try([&] { static_cast<void>(files.List(folder)); });
  Try([&] { static_cast<void>(files.Find(file)); });
  Try([&] { static_cast<void>(ReadFile(files, file)); });
  Try([&] { static_cast<void>(files.ReadMany({file, other})); });
  Try([&] { static_cast<void>(files.ReadLink(file)); });
  Try([&] { static_cast<void>(files.Traits(file)); });
  Try([&] { static_cast<void>(files.Details(QString())); });
  Try([&] { static_cast<void>(files.Details(file)); });
  Try([&] { static_cast<void>(WriteFile(files, file, "content")); });
  Try([&] { static_cast<void>(files.WriteMany({{other, "content", {}}, {file, "other", {}}})); });
  Try([&] { files.CreateFolder(folder); });
  Try([&] { files.Rename(file, other, false); });
  Try([&] { files.Rename(file, other, true); });
  Try([&] { files.Copy(file, other, true); });
  Try([&] { static_cast<void>(files.Hold(folder)->List()); });
  Try([&] { files.Remove(folder); });
  Try([&] { static_cast<void>(files.TakeLeftovers()); });
}

}  // namespace

void ListenToAnything(const QByteArray& bytes) {
  Script script(bytes);
  OddServer server;
  server.answer = [&script](PacketType asked, quint32 id, const QByteArray&) {
    return script.Next(asked, id);
  };
  Try([&server] {
    const std::shared_ptr<FileSystem> files = OpenSftpFileSystem(
        std::make_unique<OddConnector>(server),
        {.host = QStringLiteral("odd"), .user = QStringLiteral("test"), .encoding = QString()}, {});
    UseAll(*files);
  });
}

}  // namespace trevane::sftp::test
