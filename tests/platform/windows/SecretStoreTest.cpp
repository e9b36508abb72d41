#include "base/RunTimeError.h"
#include "platform/MakeSecretStore.h"
#include "tests/support/Wine.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <memory>

namespace trevane::test {
namespace {

class SecretStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!RunsUnderWine()) {
      GTEST_SKIP() << "The store is that of the user who runs the tests.";
    }
  }
  void TearDown() override {
    if (RunsUnderWine()) {
      store_->Forget(account_);
    }
  }

  const QString account_ =
      QStringLiteral("password \u00E4@cell4:22 of test %1").arg(QCoreApplication::applicationPid());
  std::unique_ptr<SecretStore> store_ = MakeSecretStore({});
};

TEST_F(SecretStoreTest, KeepsFindsAndForgets) {
  EXPECT_TRUE(store_->Look().isReady);
  EXPECT_EQ(store_->Find(account_), std::nullopt);
  for (const QByteArray& bytes : {QByteArray("s3cret"), QByteArray("a\0b", 3), QByteArray("\xFF\xFE"),
                                  QByteArray(2000, 'x'), QByteArray()}) {
    store_->Keep(account_, Secret(QByteArrayView(bytes)));
    EXPECT_EQ(store_->Find(account_), Secret(QByteArrayView(bytes))) << bytes.toStdString();
  }
  EXPECT_EQ(store_->Find(account_ + u'2'), std::nullopt);
  store_->Forget(account_);
  EXPECT_EQ(store_->Find(account_), std::nullopt);
  store_->Forget(account_);
}

TEST_F(SecretStoreTest, WhatIsTooLongIsRefused) {
  EXPECT_THROW(store_->Keep(account_, Secret(QByteArrayView(QByteArray(100'000, 'x')))), RunTimeError);
  EXPECT_EQ(store_->Find(account_), std::nullopt);
}

}  // namespace
}  // namespace trevane::test
