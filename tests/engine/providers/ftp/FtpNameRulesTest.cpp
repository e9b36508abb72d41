#include "engine/providers/ftp/FtpNameRules.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

TEST(FtpNameRules, KnowNothingAtFirst) {
  const ftp::NameRules rules;
  EXPECT_TRUE(rules.Objection("a very long name with blanks.program").isEmpty());
}

TEST(FtpNameRules, LearnFromANameThatBreaksOneRule) {
  ftp::NameRules rules;
  rules.Refused("my prog.tp");
  EXPECT_FALSE(rules.Objection("a b").isEmpty());
  EXPECT_TRUE(rules.Objection("verylongname.program").isEmpty());
  rules.Refused("verylongname.tp");
  EXPECT_FALSE(rules.Objection("otherlongname.tp").isEmpty());
  EXPECT_TRUE(rules.Objection("short.tp").isEmpty());
  rules.Refused("a.prog");
  EXPECT_FALSE(rules.Objection("b.prog").isEmpty());
  EXPECT_TRUE(rules.Objection("b.tp").isEmpty());
  rules.Refused("a.exe");
  EXPECT_FALSE(rules.Objection("b.EXE").isEmpty());
  EXPECT_TRUE(rules.Objection("b.tp").isEmpty());
}

TEST(FtpNameRules, LearnNothingFromANameThatBreaksTwo) {
  ftp::NameRules rules;
  rules.Refused("my very long name.program");
  rules.Refused(".a b");
  EXPECT_TRUE(rules.Objection("a b").isEmpty());
  EXPECT_TRUE(rules.Objection(".a").isEmpty());
  EXPECT_TRUE(rules.Objection("verylongname.tp").isEmpty());
}

TEST(FtpNameRules, TakeBackWhatAListingShowsToBeWrong) {
  ftp::NameRules rules;
  rules.Refused("my prog.tp");
  rules.Refused("verylongname.tp");
  rules.Refused("a.exe");
  rules.Seen("some other name.exe");
  EXPECT_TRUE(rules.Objection("a b").isEmpty());
  EXPECT_TRUE(rules.Objection("verylongname.tp").isEmpty());
  EXPECT_TRUE(rules.Objection("b.exe").isEmpty());
}

}  // namespace
}  // namespace trevane::test
