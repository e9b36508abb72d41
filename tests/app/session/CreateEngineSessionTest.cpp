#include "app/session/AppServices.h"
#include "app/session/CreateEngineSession.h"
#include "engine/controllers/EngineSession.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "engine/substitute/SubstituteEngine.h"
#include "tests/support/FailingEngine.h"
#include "tests/support/FakeShellIcons.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/ScriptedPrompts.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

/// The engine's call that fails, counted from 1, and what the user reads.
struct Step {
  const char* name;
  int call;
  const char16_t* message;
};

const Step kSteps[] = {
    {"Workspaces", 1, u"Failed in getting a Default IxoWorkspace object."},
    {"DefaultWorkspace", 2, u"Failed in getting a Default IxoWorkspace object."},
    {"Controllers", 3, u"Failed in getting a IxoControllers object."},
    {"AddController", 4, u"Failed in creating a LocalFile IxoController object."},
};

class CreateEngineSessionTest : public testing::TestWithParam<std::tuple<Step, EngineFault>> {
 protected:
  AppServices Services() {
    return {.prompts = prompts_,
            .volumes = volumes_,
            .shellIcons = shellIcons_,
            .createEngine = [this] { return engine_; },
            .isFirstInstance = [] { return true; },
            .programFolder = {},
            .baseName = {},
            .version = {}};
  }

  FakeVolumes volumes_;
  FakeShellIcons shellIcons_;
  ScriptedPrompts prompts_;
  std::optional<FileSystemRequest> request_;
  std::shared_ptr<FailingEngine> engine_ = std::make_shared<FailingEngine>(std::make_shared<SubstituteEngine>(
      ProviderTable{{QStringLiteral("IxoProv.LocalFile"), [this](const FileSystemRequest& request) {
                       request_ = request;
                       return std::make_shared<MemoryFileSystem>();
                     }}}));
  EngineSession session_;
};

TEST_P(CreateEngineSessionTest, TheFirstMissingObjectEndsItWithItsMessage) {
  const auto& [step, fault] = GetParam();
  engine_->Arm(step.call, FaultSpan::Once, error::kTimeOut, fault);
  prompts_.ExpectBox(QString::fromUtf16(step.message));
  AppServices services = Services();
  EXPECT_FALSE(CreateEngineSession(session_, services));
  ASSERT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_EQ(prompts_.Asked()[0].icon, PromptIcon::Critical);
  EXPECT_EQ(prompts_.Asked()[0].buttons, PromptButtons::Ok);
  EXPECT_EQ(prompts_.Asked()[0].title, QString());
  EXPECT_EQ(prompts_.Asked()[0].informativeText.isEmpty(), fault == EngineFault::YieldNothing);
  EXPECT_EQ(session_.gIxoEngine, nullptr);
  EXPECT_EQ(session_.gIxoWorkspace, nullptr);
  EXPECT_EQ(session_.gIxoCtrls().Count(), 0);
  // The collection is left as it is.
  EXPECT_EQ(session_.gIxoControllers != nullptr, step.call > 3);
}

INSTANTIATE_TEST_SUITE_P(Steps, CreateEngineSessionTest,
                         testing::Combine(testing::ValuesIn(kSteps),
                                          testing::Values(EngineFault::Raise, EngineFault::YieldNothing)),
                         [](const auto& info) {
                           return std::string(std::get<0>(info.param).name) +
                                  (std::get<1>(info.param) == EngineFault::Raise ? "Raises"
                                                                                 : "YieldsNothing");
                         });

using CreateEngineSession1 = CreateEngineSessionTest;

TEST_F(CreateEngineSession1, TheLocalControllerIsAddedWithoutMachineAndOption) {
  AppServices services = Services();
  ASSERT_TRUE(CreateEngineSession(session_, services));
  ASSERT_TRUE(request_.has_value());
  EXPECT_TRUE(request_->machine.isNull());
  EXPECT_TRUE(request_->option.isNull());
}

TEST_F(CreateEngineSession1, ARecordThatCannotBeAddedIsNoFailure) {
  AppServices services = Services();
  ASSERT_TRUE(CreateEngineSession(session_, services));
  const QString name = session_.gLocalCtrlName;
  // The name is taken now: the same engine, asked anew for its first controller, gives the same one.
  engine_ = std::make_shared<FailingEngine>(std::make_shared<SubstituteEngine>(
      ProviderTable{{QStringLiteral("IxoProv.LocalFile"),
                     [](const FileSystemRequest&) { return std::make_shared<MemoryFileSystem>(); }}}));
  EXPECT_TRUE(CreateEngineSession(session_, services));
  EXPECT_EQ(session_.gLocalCtrlName, name);
  EXPECT_EQ(session_.gIxoCtrls().Count(), 1);
}

}  // namespace
}  // namespace trevane::test
