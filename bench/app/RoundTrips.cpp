// Prints what each action of a user costs in round trips, over a scripted controller in the real window.
#include "tests/app/window/MainWindowFixture.h"
#include "tests/support/ScriptedServer.h"
#include "views/bars/HistoryBox.h"

#include <QLineEdit>

#include <cstdio>
#include <exception>
#include <numeric>

namespace trevane::bench {
namespace {

using test::ScriptedOptions;
using test::ScriptedServer;

/// The program with two controllers, "A" and "B", and the local drive C:. Nothing is asserted.
class Desk final : public test::MainWindowFixture {
 public:
  explicit Desk(bool overlapping) {
    for (const auto& [server, files] : {std::pair{&a_, filesA_}, std::pair{&b_, filesB_}}) {
      *server = std::make_shared<ScriptedServer>(
          files,
          ScriptedOptions{.identities = ScriptedOptions::Identities::Texts, .overlapping = overlapping});
    }
    filesA_->AddFile(QStringLiteral("d1\\d2\\d3\\d4\\file.pac"), "x");
    for (int i = 0; i < 100; ++i) {
      filesA_->AddFile(QStringLiteral("hundred\\file%1.pac").arg(i), QByteArray(4096, 'x'));
    }
    for (int i = 0; i < 19; ++i) {
      const QString folder = i < 7 ? QString() : i < 13 ? QStringLiteral("one\\") : QStringLiteral("two\\");
      filesA_->AddFile(QStringLiteral("tree\\%1file%2.pac").arg(folder).arg(i), QByteArray(4096, 'x'));
    }
    for (const QString& name : {QStringLiteral("one"), QStringLiteral("two")}) {
      memory_->AddFile(QStringLiteral("C:\\%1\\up.pac").arg(name), "x");
    }
    memory_->AddFile(QStringLiteral("C:\\two\\up2.pac"), "x");
    filesB_->AddFolder(QStringLiteral("in"));
    createEngine_ = [this]() -> std::shared_ptr<IxoEngine> {
      return std::make_shared<SubstituteEngine>(ProviderTable{
          {QStringLiteral("IxoProv.LocalFile"), [this](const FileSystemRequest&) { return memory_; }},
          a_->AsProvider(QStringLiteral("IxoProv.A")),
          b_->AsProvider(QStringLiteral("IxoProv.B"))});
    };
    Put("cells.fmg",
        "[A]\r\nCtrlName=A\r\nProvider=IxoProv.A\r\nRoot=/"
        "\r\n[B]\r\nCtrlName=B\r\nProvider=IxoProv.B\r\nRoot=/\r\n");
    prompts_.AnswerAllChoices(0);
    prompts_.AnswerAllBoxes(PromptAnswer::Ok);
    Start(u'"' + InFolder("cells.fmg") + u'"');
  }

  void TestBody() override {}

  void Enter(const QString& address) {
    auto& box = Find<HistoryBox>("cmbAddress");
    box.setFocus();
    box.setEditText(address);
    QTest::keyClick(&box, Qt::Key_Return);
    Settle();
  }
  void Do(CommandId id) {
    List().setFocus();
    Window()->Dispatch(id);
    Settle();
  }
  void Select(const QString& name) { ClickItem(name); }
  void TypeName(const QString& name) {
    List().setFocus();
    Window()->Dispatch(CommandId::Rename);
    if (auto* editor = List().findChild<QLineEdit*>(QStringLiteral("txtLabel"))) {
      QCoreApplication::processEvents();
      editor->selectAll();
      QTest::keyClicks(editor, name);
      QTest::keyClick(editor, Qt::Key_Return);
    } else {
      std::puts("no editor");
    }
    Settle();
  }
  void SelectAll() {
    List().setFocus();
    Window()->Dispatch(CommandId::SelectAll);
    QCoreApplication::processEvents();
  }

  /// The round trips of both controllers during `work`.
  int Count(const std::function<void()>& work) { return CostOf(CallsOf(work)); }
  /// Without the listing that shows the result at the end, where there is one.
  int CountBesideRefresh(const std::function<void()>& work) {
    QStringList calls = CallsOf(work);
    if (!calls.isEmpty() && IsListing(calls.last())) {
      calls.removeLast();
    }
    return CostOf(calls);
  }

 private:
  static bool IsListing(const QString& call) { return call.startsWith(QStringLiteral("List ")); }
  /// A listing takes three round trips on most devices.
  static int CostOf(const QStringList& calls) {
    return std::accumulate(calls.begin(), calls.end(), 0,
                           [](int trips, const QString& call) { return trips + (IsListing(call) ? 3 : 1); });
  }
  QStringList CallsOf(const std::function<void()>& work) {
    a_->ClearCalls();
    b_->ClearCalls();
    work();
    QStringList calls;
    for (const auto& [name, server] : {std::pair{"A", a_}, std::pair{"B", b_}}) {
      for (const QString& call : server->Calls()) {
        if (qEnvironmentVariableIsSet("ROUND_TRIPS_CALLS")) {
          std::printf("    %s: %s\n", name, qPrintable(call));
        }
        calls.append(call);
      }
    }
    return calls;
  }
  /// What comes after an action from the event loop belongs to it.
  static void Settle() {
    QTest::qWait(0);
    QCoreApplication::processEvents();
  }

  std::shared_ptr<MemoryFileSystem> filesA_ = std::make_shared<MemoryFileSystem>();
  std::shared_ptr<MemoryFileSystem> filesB_ = std::make_shared<MemoryFileSystem>();
  std::shared_ptr<ScriptedServer> a_;
  std::shared_ptr<ScriptedServer> b_;
};

void Print(const char* action, int trips, const char* goal) {
  std::printf("| %-62s | %5d | %-12s |\n", action, trips, goal);
}

void PrintAll(bool overlapping) {
  Desk desk(overlapping);
  const QString a = QStringLiteral("Workspace\\A\\");
  const QString b = QStringLiteral("Workspace\\B\\");
  std::printf("| %-62s | %-5s | %-12s |\n", overlapping ? "Batches that overlap" : "One file after the other",
              "trips", "goal");
  std::printf("|---|---|---|\n");

  desk.Enter(QStringLiteral("Workspace"));
  Print("address of a folder, 1 deep", desk.Count([&] { desk.Enter(a + QStringLiteral("hundred")); }),
        "<= 4");
  desk.Enter(QStringLiteral("Workspace"));
  Print("address of a folder, 4 deep", desk.Count([&] { desk.Enter(a + QStringLiteral("d1\\d2\\d3\\d4")); }),
        "<= 7");
  Print("F5", desk.Count([&] { desk.Do(CommandId::Refresh); }), "<= 3");
  desk.Select(QStringLiteral("file.pac"));
  Print("rename of a file, without the refresh",
        desk.CountBesideRefresh([&] { desk.TypeName(QStringLiteral("other.pac")); }), "<= 4");
  desk.Select(QStringLiteral("other.pac"));
  Print("properties of a file", desk.Count([&] { desk.Do(CommandId::Properties); }), "<= 2");
  desk.Select(QStringLiteral("other.pac"));
  Print("deletion of a file, without the refresh",
        desk.CountBesideRefresh([&] { desk.Do(CommandId::Delete); }), "<= 5");

  const auto upload = [&](const QString& name) {
    desk.Enter(QStringLiteral("Workspace\\My Computer\\C:"));
    desk.Select(name);
    desk.Do(CommandId::Copy);
    desk.Enter(b + QStringLiteral("in"));
    return desk.Count([&] { desk.Do(CommandId::Paste); });
  };
  const int one = upload(QStringLiteral("one"));
  Print("upload of one more new file within a folder", upload(QStringLiteral("two")) - one, "<= 5");
  Print("upload of a folder with one file", one, "");

  desk.Enter(a.chopped(1));
  desk.Select(QStringLiteral("hundred"));
  desk.Do(CommandId::Copy);
  desk.Enter(b.chopped(1));
  Print("copy of a folder of 100 files of 4 KiB, A to B", desk.Count([&] { desk.Do(CommandId::Paste); }),
        overlapping ? "<= 5 a batch" : "<= 6 a file");
  desk.Enter(a + QStringLiteral("hundred"));
  desk.SelectAll();
  desk.Do(CommandId::Copy);
  desk.Enter(b + QStringLiteral("in"));
  Print("copy of 100 selected files of 4 KiB, A to B", desk.Count([&] { desk.Do(CommandId::Paste); }),
        overlapping ? "<= 5 a batch" : "<= 6 a file");
  desk.Enter(a.chopped(1));
  desk.Select(QStringLiteral("tree"));
  desk.Do(CommandId::Cut);
  desk.Enter(b.chopped(1));
  Print("move of 19 files in 3 folders, A to B", desk.Count([&] { desk.Do(CommandId::Paste); }),
        overlapping ? "<= 120" : "<= 200");
  std::printf("\n");
}

}  // namespace
}  // namespace trevane::bench

int main(int count, char** values) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(count, values);
  try {
    trevane::bench::PrintAll(true);
    trevane::bench::PrintAll(false);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
  return 0;
}
