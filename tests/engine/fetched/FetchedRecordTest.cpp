#include "base/NameCodec.h"
#include "engine/fetched/FetchedRecord.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

FetchedRecord Sample() {
  return {.provider = QStringLiteral("IxoProv.Robot"),
          .machine = QStringLiteral("cell4:22"),
          .option = QStringLiteral("User=joe,KeyFile=\"a,b\""),
          .root = QStringLiteral("/programs"),
          .server = QStringLiteral("sftp:0:0:ssh-ed25519 AAAA:/"),
          .controller = QStringLiteral("Cell 4"),
          .below = DecodeBytes("a\nb\xff\\100%.pac"),
          .path = DecodeBytes("\\programs\\a\nb\xff\\100%.pac"),
          .name = QStringLiteral("100%.pac"),
          .size = 123456789012,
          .modified = {1700000000123},
          .hash = QByteArray::fromHex("00ff10")};
}

TEST(FetchedRecordTest, AllOfItIsReadBack) {
  EXPECT_EQ(ReadFetchedRecord(WriteFetchedRecord(Sample())), Sample());
}

TEST(FetchedRecordTest, ADateMayBeMissing) {
  FetchedRecord record = Sample();
  record.modified = {};
  EXPECT_EQ(ReadFetchedRecord(WriteFetchedRecord(record)), record);
}

TEST(FetchedRecordTest, TheMachineMayBeUnknown) {
  FetchedRecord record = Sample();
  record.server.clear();
  EXPECT_FALSE(WriteFetchedRecord(record).contains("Server"));
  EXPECT_EQ(ReadFetchedRecord(WriteFetchedRecord(record)), record);
}

TEST(FetchedRecordTest, WhatIsNotAllOfItIsNone) {
  const QByteArray whole = WriteFetchedRecord(Sample());
  for (qsizetype length = 0; length < whole.size(); ++length) {
    EXPECT_EQ(ReadFetchedRecord(whole.left(length)), std::nullopt) << length;
  }
  EXPECT_EQ(ReadFetchedRecord("something else"), std::nullopt);
  QByteArray broken = whole;
  EXPECT_EQ(ReadFetchedRecord(broken.replace("%0025", "%zz25")), std::nullopt);
  broken = whole;
  EXPECT_EQ(ReadFetchedRecord(broken.replace("Size=", "Size=x")), std::nullopt);
}

}  // namespace
}  // namespace trevane
