#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QtGlobal>

#include <optional>

namespace trevane::sftp {

/// The kinds of packets of SFTP version 3.
enum class PacketType : quint8 {
  Init = 1,
  Version = 2,
  Open = 3,
  Close = 4,
  Read = 5,
  Write = 6,
  Lstat = 7,
  Fstat = 8,
  SetStat = 9,
  FsetStat = 10,
  OpenDir = 11,
  ReadDir = 12,
  Remove = 13,
  MkDir = 14,
  RmDir = 15,
  RealPath = 16,
  Stat = 17,
  Rename = 18,
  ReadLink = 19,
  SymLink = 20,
  Status = 101,
  Handle = 102,
  Data = 103,
  Name = 104,
  Attrs = 105,
  Extended = 200,
  ExtendedReply = 201
};

/// How a file is opened.
namespace openflag {
inline constexpr quint32 kRead = 0x01;
inline constexpr quint32 kWrite = 0x02;
inline constexpr quint32 kCreate = 0x08;
inline constexpr quint32 kTruncate = 0x10;
inline constexpr quint32 kExclusive = 0x20;
}  // namespace openflag

/// What a server tells of an item, or is asked to set; empty where it does not.
struct Attributes {
  static constexpr quint32 kKindMask = 0170000;
  static constexpr quint32 kFolder = 0040000;
  static constexpr quint32 kFile = 0100000;
  static constexpr quint32 kLink = 0120000;

  struct Owner {
    quint32 user = 0;
    quint32 group = 0;
    friend bool operator==(const Owner&, const Owner&) = default;
  };
  /// Seconds since 1970.
  struct Times {
    quint32 accessed = 0;
    quint32 modified = 0;
    friend bool operator==(const Times&, const Times&) = default;
  };

  std::optional<quint64> size = {};
  std::optional<Owner> owner = {};
  /// With the bits of the kind.
  std::optional<quint32> mode = {};
  std::optional<Times> times = {};

  [[nodiscard]] quint32 Kind() const noexcept { return mode.value_or(0) & kKindMask; }
  [[nodiscard]] bool IsFolder() const noexcept { return Kind() == kFolder; }
  [[nodiscard]] bool IsLink() const noexcept { return Kind() == kLink; }
  /// Also where the server tells no kind.
  [[nodiscard]] bool IsFile() const noexcept { return Kind() == kFile || Kind() == 0; }
  friend bool operator==(const Attributes&, const Attributes&) = default;
};

/// Builds one packet, with its length in front.
class PacketWriter {
 public:
  explicit PacketWriter(PacketType type);
  PacketWriter(PacketType type, quint32 id) : PacketWriter(type) { Number32(id); }

  PacketWriter& Number32(quint32 number);
  PacketWriter& Number64(quint64 number);
  /// With its length in front.
  PacketWriter& Bytes(QByteArrayView bytes);
  PacketWriter& Add(const Attributes& attributes);

  [[nodiscard]] QByteArray Take();

 private:
  QByteArray packet_;
};

/// Takes the fields of a packet one after the other; nothing where the packet ends before. `packet` must
/// outlive it.
class PacketFields {
 public:
  explicit PacketFields(QByteArrayView packet) noexcept : rest_(packet) {}

  [[nodiscard]] bool IsAtEnd() const noexcept { return rest_.isEmpty(); }
  [[nodiscard]] qsizetype Left() const noexcept { return rest_.size(); }
  [[nodiscard]] std::optional<quint8> Number8() noexcept;
  [[nodiscard]] std::optional<quint32> Number32() noexcept;
  [[nodiscard]] std::optional<quint64> Number64() noexcept;
  [[nodiscard]] std::optional<QByteArrayView> Bytes() noexcept;
  [[nodiscard]] std::optional<Attributes> ItemAttributes() noexcept;

 private:
  QByteArrayView rest_;
};

}  // namespace trevane::sftp
