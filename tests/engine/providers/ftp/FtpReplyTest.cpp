#include "engine/providers/ftp/FtpErrors.h"
#include "engine/providers/ftp/FtpReply.h"

#include <gtest/gtest.h>

namespace trevane::ftp::test {
namespace {

TEST(FtpReplyTest, CodesAreOfOneKindOnly) {
  EXPECT_TRUE(Reply{226}.IsDone());
  EXPECT_FALSE(Reply{226}.IsMore());
  EXPECT_TRUE(Reply{350}.IsMore());
  EXPECT_FALSE(Reply{350}.IsDone());
  EXPECT_TRUE(Reply{450}.IsRefusedForNow());
  EXPECT_FALSE(Reply{450}.IsDone());
  EXPECT_FALSE(Reply{550}.IsRefusedForNow());
  EXPECT_FALSE(Reply{550}.IsDone());
}

TEST(FtpReplyTest, NoReplyIsNoSuccess) {
  EXPECT_FALSE(Reply{}.IsDone());
  EXPECT_FALSE(Reply{}.IsMore());
  EXPECT_FALSE(Reply{}.IsRefusedForNow());
  EXPECT_FALSE(Reply{}.IsUnknownCommand());
}

TEST(FtpReplyTest, ARefusedFileIsNoUnknownCommand) {
  for (const int code : {500, 501, 502, 504}) {
    EXPECT_TRUE(Reply{code}.IsUnknownCommand()) << code;
  }
  for (const int code : {425, 450, 503, 530, 550, 553}) {
    EXPECT_FALSE(Reply{code}.IsUnknownCommand()) << code;
  }
}

TEST(FtpReplyTest, ANameInARefusalTellsNothing) {
  const Reply denied{550, "/a/not found.txt: Permission denied"};
  EXPECT_EQ(NumberOf(denied, "/a/not found.txt"), error::kAccessDenied);
  EXPECT_EQ(NumberOf(Reply{550, "disk.full: No such file"}, "/a/disk.full"), error::kNotFound);
  EXPECT_EQ(NumberOf(Reply{550, "exist: already exist"}, "/exist"), error::kExists);
}

}  // namespace
}  // namespace trevane::ftp::test
