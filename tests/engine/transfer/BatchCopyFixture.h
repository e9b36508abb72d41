#pragma once

#include "engine/items/clsIxoFile.h"
#include "tests/support/EngineWorld.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace trevane::test {

inline const QString kTree = QStringLiteral("Workspace\\My Computer\\C:\\tree");
inline const QString kIn = QStringLiteral("Workspace\\Ctrl1\\in");

class BatchCopyTest : public testing::Test {
 protected:
  BatchCopyTest() { target().AddFolder(QStringLiteral("in")); }
  void TearDown() override {
    EXPECT_EQ(world_.engine->LiveFileNames(), QStringList()) << "left cached by the engine";
    EXPECT_EQ(world_.engine->HeldFiles(), 0);
  }

  MemoryFileSystem& source() { return *world_.local.memory; }
  MemoryFileSystem& target() { return *world_.one.memory; }

  qint32 Copy(const QString& from = kTree, const QString& into = kIn) {
    const auto file = world_.File(from);
    EXPECT_EQ(file->Result(), 0);
    const qint32 result = file->CopyDiffCtrl(into, {}, observer_);
    arrived_ = file->Arrived();
    items_ = file->ArrivedItems();
    text_ = file->ResultText();
    leftOut_ = file->LeftOut();
    return result;
  }
  void AddFiles(int count) {
    for (int i = 0; i < count; ++i) {
      source().AddFile(QStringLiteral("C:\\tree\\f%1").arg(i, 4, 10, QLatin1Char('0')), "content");
    }
  }
  qsizetype Calls(const EngineWorld::Machine& machine, FileSystemOperation operation) {
    return std::ranges::count_if(machine.faulty->Calls(), [operation](const FileSystemCall& call) {
      return call.operation == operation;
    });
  }

  EngineWorld world_;
  ItemObserver observer_;
  Arrival arrived_ = Arrival::Failed;
  qint64 items_ = 0;
  QString text_;
  LeftOutItems leftOut_;
};

}  // namespace trevane::test
