#include "engine/providers/sftp/SftpAnswer.h"
#include "engine/providers/sftp/SftpPacket.h"
#include "engine/providers/sftp/SftpStream.h"
#include "tests/engine/providers/sftp/ParseAnything.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace trevane::sftp {
namespace {

using test::ParseAnything;

QByteArray Body(PacketWriter writer) {
  return writer.Take().sliced(4);
}

Attributes AllAttributes() {
  return {.size = 0x123456789AULL,
          .owner = Attributes::Owner{1000, 100},
          .mode = 0100644U,
          .times = Attributes::Times{1, 4102444800U}};
}

TEST(SftpPacket, APacketBeginsWithItsLengthTypeAndId) {
  const QByteArray packet = PacketWriter(PacketType::Stat, 0x01020304).Bytes("/x").Take();
  EXPECT_EQ(packet, QByteArray::fromHex("0000000b"
                                        "11"
                                        "01020304"
                                        "000000022f78"));
}

TEST(SftpPacket, AttributesAreReadAsTheyWereWritten) {
  for (const Attributes& attributes :
       {Attributes(), AllAttributes(), Attributes{.mode = 0755U}, Attributes{.size = 0U}}) {
    const std::optional<Answer> answer =
        ParseAnswer(Body(PacketWriter(PacketType::Attrs, 7).Add(attributes)));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->id, 7U);
    EXPECT_EQ(std::get<Attributes>(answer->content), attributes);
  }
}

TEST(SftpPacket, ExtendedAttributesAreSkipped) {
  const QByteArray packet = Body(
      PacketWriter(PacketType::Attrs, 1).Number32(0x80000001).Number64(5).Number32(1).Bytes("a").Bytes("b"));
  const std::optional<Answer> answer = ParseAnswer(packet);
  ASSERT_TRUE(answer);
  EXPECT_EQ(std::get<Attributes>(answer->content).size, 5U);
}

TEST(SftpPacket, NamesAreReadWithTheirAttributes) {
  const QByteArray packet = Body(PacketWriter(PacketType::Name, 9)
                                     .Number32(2)
                                     .Bytes("a")
                                     .Bytes("-rw a")
                                     .Add(AllAttributes())
                                     .Bytes("b")
                                     .Bytes({})
                                     .Add({}));
  const std::optional<Answer> answer = ParseAnswer(packet);
  ASSERT_TRUE(answer);
  const auto& names = std::get<NameAnswer>(answer->content).names;
  ASSERT_EQ(names.size(), 2U);
  EXPECT_EQ(names[0].name, "a");
  EXPECT_EQ(names[0].line, "-rw a");
  EXPECT_EQ(names[0].attributes, AllAttributes());
  EXPECT_EQ(names[1].name, "b");
}

TEST(SftpPacket, AStatusMayHaveNoText) {
  const std::optional<Answer> bare = ParseAnswer(Body(PacketWriter(PacketType::Status, 3).Number32(4)));
  ASSERT_TRUE(bare);
  EXPECT_EQ(std::get<StatusAnswer>(bare->content).code, 4U);
  const std::optional<Answer> whole =
      ParseAnswer(Body(PacketWriter(PacketType::Status, 3).Number32(0).Bytes("Success").Bytes("en")));
  ASSERT_TRUE(whole);
  EXPECT_TRUE(std::get<StatusAnswer>(whole->content).IsOk());
  EXPECT_EQ(std::get<StatusAnswer>(whole->content).text, "Success");
}

TEST(SftpPacket, AVersionHasExtensions) {
  PacketWriter writer(PacketType::Version, 3);
  writer.Bytes("posix-rename@openssh.com").Bytes("1");
  const std::optional<VersionAnswer> version = ParseVersion(Body(writer));
  ASSERT_TRUE(version);
  EXPECT_EQ(version->version, 3U);
  ASSERT_EQ(version->extensions.size(), 1U);
  EXPECT_EQ(version->extensions[0].first, "posix-rename@openssh.com");
}

TEST(SftpPacket, ACutPacketIsNoAnswer) {
  // Status texts may be missing, and what follows the id of an extended reply is its own.
  PacketWriter names(PacketType::Name, 1);
  names.Number32(1).Bytes("a").Bytes("line").Add(AllAttributes());
  PacketWriter handle(PacketType::Handle, 1);
  handle.Bytes("handle");
  PacketWriter data(PacketType::Data, 1);
  data.Bytes("data");
  PacketWriter attributes(PacketType::Attrs, 1);
  attributes.Add(AllAttributes());
  for (PacketWriter* writer : {&names, &handle, &data, &attributes}) {
    const QByteArray whole = Body(*writer);
    EXPECT_TRUE(ParseAnswer(whole));
    for (qsizetype size = 0; size < whole.size(); ++size) {
      EXPECT_FALSE(ParseAnswer(whole.first(size))) << size;
    }
  }
}

TEST(SftpPacket, CountsAndLengthsThatThePacketCannotHoldAreRefused) {
  for (const quint32 huge : {3U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_FALSE(ParseAnswer(Body(PacketWriter(PacketType::Name, 1).Number32(huge).Number64(0))));
    EXPECT_FALSE(ParseAnswer(Body(PacketWriter(PacketType::Data, 1).Number32(huge))));
    EXPECT_FALSE(ParseAnswer(
        Body(PacketWriter(PacketType::Attrs, 1).Number32(0x80000000).Number32(huge).Number32(0))));
  }
}

TEST(SftpPacket, RequestsAndUnknownTypesAreNoAnswers) {
  for (const int type : {0, 1, 3, 20, 106, 200, 255}) {
    EXPECT_FALSE(ParseAnswer(Body(PacketWriter(static_cast<PacketType>(type), 1).Number32(0))));
  }
  EXPECT_FALSE(ParseVersion(Body(PacketWriter(PacketType::Status, 3))));
}

TEST(SftpStream, PacketsAreCutWhereverTheBytesAre) {
  const QByteArray bytes = PacketWriter(PacketType::Status, 1).Number32(0).Take() +
                           PacketWriter(PacketType::Handle, 2).Bytes("h").Take();
  for (qsizetype step = 1; step <= bytes.size(); ++step) {
    PacketStream stream;
    std::vector<quint32> ids;
    for (qsizetype at = 0; at < bytes.size(); at += step) {
      stream.Append(bytes.mid(at, step));
      while (const std::optional<QByteArrayView> packet = stream.Next()) {
        const std::optional<Answer> answer = ParseAnswer(*packet);
        ASSERT_TRUE(answer);
        ids.push_back(answer->id);
      }
    }
    EXPECT_EQ(ids, (std::vector<quint32>{1, 2})) << step;
  }
}

TEST(SftpStream, AHugeOrEmptyPacketBreaksTheStream) {
  for (const char* const length : {"00000000", "00100001", "7fffffff", "80000000", "ffffffff"}) {
    PacketStream stream;
    stream.Append(QByteArray::fromHex(length) + "text of a log-on script");
    EXPECT_FALSE(stream.Next());
    EXPECT_TRUE(stream.IsBroken());
    stream.Append(PacketWriter(PacketType::Status, 1).Number32(0).Take());
    EXPECT_FALSE(stream.Next());
  }
}

TEST(SftpPacket, NoBytesAreTooOddForTheParser) {
  quint32 state = 1;
  for (int round = 0; round < 20000; ++round) {
    QByteArray bytes = PacketWriter(PacketType::Name, 1)
                           .Number32(2)
                           .Bytes("a")
                           .Bytes("l")
                           .Add(AllAttributes())
                           .Bytes("b")
                           .Bytes("m")
                           .Add({})
                           .Take();
    for (int change = 0; change < 3; ++change) {
      state = state * 1664525U + 1013904223U;
      bytes[static_cast<qsizetype>((state >> 8) % static_cast<quint32>(bytes.size()))] =
          static_cast<char>(state >> 24);
    }
    EXPECT_LE(ParseAnything(bytes), bytes.size());
  }
}

}  // namespace
}  // namespace trevane::sftp
