#include "app/workspace/WorkspaceFormat.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

WorkspaceSection Section(const QString& name, const QString& option, const QString& root) {
  WorkspaceSection section;
  section.name = name;
  section.controller.SetCtrlName(name);
  section.controller.SetProvName(QStringLiteral("IxoProv.Cell"));
  section.controller.SetMachineName(QStringLiteral("m"));
  section.controller.SetCtrlOption(option);
  section.controller.SetRoot(root);
  return section;
}

TEST(WorkspaceFormatTest, SectionsAreWrittenInTheirOrder) {
  const QByteArray text = WriteWorkspace({Section(QStringLiteral("B"), QStringLiteral("a=b"), {}),
                                          Section(QStringLiteral("A"), {}, QStringLiteral("/"))});
  EXPECT_EQ(text,
            "[B]\r\nCtrlName=B\r\nProvider=IxoProv.Cell\r\nMachine=m\r\nOption=a=b\r\nRoot=\r\n"
            "[A]\r\nCtrlName=A\r\nProvider=IxoProv.Cell\r\nMachine=m\r\nOption=\r\nRoot=/\r\n");
  EXPECT_EQ(WriteWorkspace({}), "");
}

TEST(WorkspaceFormatTest, WrittenSectionsAreReadBack) {
  const std::vector<WorkspaceSection> written = {
      Section(QStringLiteral("Cell 7"), QStringLiteral("  \"Path=x\""), QStringLiteral("/prog")),
      Section(QString::fromUtf8("Zelle \xC3\xA4"), QStringLiteral("'a'"), QStringLiteral("/"))};
  const WorkspaceContent read = ReadWorkspace(WriteWorkspace(written));
  ASSERT_EQ(read.sections.size(), written.size());
  EXPECT_EQ(read.sectionCount, 2);
  for (size_t i = 0; i < written.size(); ++i) {
    EXPECT_EQ(read.sections[i].name, written[i].name);
    EXPECT_EQ(read.sections[i].controller.CtrlName(), written[i].controller.CtrlName());
    EXPECT_EQ(read.sections[i].controller.ProvName(), written[i].controller.ProvName());
    EXPECT_EQ(read.sections[i].controller.MachineName(), written[i].controller.MachineName());
    EXPECT_EQ(read.sections[i].controller.CtrlOption(), written[i].controller.CtrlOption());
    EXPECT_EQ(read.sections[i].controller.Root(), written[i].controller.Root());
    EXPECT_TRUE(read.sections[i].controller.RealCtrlName().isEmpty());
  }
}

TEST(WorkspaceFormatTest, MissingKeysHaveTheirDefaults) {
  const WorkspaceContent content = ReadWorkspace("[A]\r\n[B]\r\nRoot=\r\n");
  ASSERT_EQ(content.sections.size(), 2U);
  EXPECT_EQ(content.sections[0].controller.CtrlName(), QString());
  EXPECT_EQ(content.sections[0].controller.ProvName(), QString());
  EXPECT_EQ(content.sections[0].controller.Root(), QStringLiteral("/"));
  EXPECT_EQ(content.sections[1].controller.Root(), QString());
}

TEST(WorkspaceFormatTest, LaterValuesOfOneSectionNameWin) {
  WorkspaceSection later = Section(QStringLiteral("Cell"), {}, QStringLiteral("/later"));
  const QByteArray text =
      WriteWorkspace({Section(QStringLiteral("Cell"), {}, QStringLiteral("/first")), later});
  const WorkspaceContent content = ReadWorkspace(text);
  ASSERT_EQ(content.sections.size(), 1U);
  EXPECT_EQ(content.sections[0].controller.Root(), QStringLiteral("/later"));
}

TEST(WorkspaceFormatTest, TextsThatAreNoWorkspaceHoldNothing) {
  for (const QByteArray& text : {QByteArray(), QByteArray("CtrlName=A\r\n"), QByteArray("\0\xFF\xFE[", 4)}) {
    EXPECT_TRUE(ReadWorkspace(text).sections.empty());
  }
}

}  // namespace
}  // namespace trevane::test
