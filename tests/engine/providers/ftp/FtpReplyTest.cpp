#include "engine/providers/ftp/FtpErrors.h"
#include "engine/providers/ftp/FtpReply.h"

#include <gtest/gtest.h>

#include <vector>

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

TEST(FtpReplyTest, TheWordsOfARefusalTellTheReason) {
  struct Row {
    Reply reply;
    qint32 number;
  };
  const std::vector<Row> rows{
      {{550, "No such file or directory."}, error::kNotFound},
      {{550, "The system cannot find the file specified."}, error::kNotFound},
      {{550, "FILE NOT FOUND"}, error::kNotFound},
      {{450, "No such file or directory"}, error::kNotFound},
      {{550, "Permission denied."}, error::kAccessDenied},
      {{550, "File exists"}, error::kExists},
      {{550, "Directory not empty"}, error::kDirectoryNotEmpty},
      {{550, "Not a directory"}, providererror::kNotAFolder},
      {{550, "File name too long"}, providererror::kNameTooLong},
      {{550, "Read-only file system"}, providererror::kWriteProtected},
      {{550, "Invalid cross-device link"}, providererror::kNotSameDevice},
      {{550, "The file is being used by another process"}, kInUse},
      {{451, "No space left on device"}, error::kDiskFull},
      {{550, "Not enough space on the disk"}, error::kDiskFull},
      {{553, "Could not create file."}, error::kAccessDenied},
      // These codes are as clear as any words.
      {{452, "Permission denied"}, error::kDiskFull},
      {{552, "Aborted"}, error::kDiskFull},
      {{426, "No such file"}, kConnectionLost},
      {{425, "Permission denied"}, kNoData},
      {{502, "File exists"}, error::kNotSupported},
      // Without clear words the code must do.
      {{550, "Requested action not taken"}, providererror::kGeneralFailure},
      {{550, ""}, providererror::kGeneralFailure},
      {{450, "Try later"}, kInUse},
      {{451, "Local error"}, providererror::kDeviceIo},
      {{553, "No"}, error::kInvalidName},
      {{530, "No"}, error::kAccessDenied},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(NumberOf(row.reply), row.number) << row.reply.code << ' ' << row.reply.text.toStdString();
  }
}

}  // namespace
}  // namespace trevane::ftp::test
