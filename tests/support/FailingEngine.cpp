#include "tests/support/FailingEngine.h"

#include "engine/model/IxoController.h"
#include "engine/model/IxoControllers.h"
#include "engine/model/IxoFile.h"
#include "engine/model/IxoFiles.h"
#include "engine/model/IxoWorkspace.h"
#include "engine/model/IxoWorkspaces.h"

#include <algorithm>
#include <vector>

namespace trevane::test {

struct FailingEngine::State {
  QStringList calls;
  int count = 0;
  int armedAt = 0;
  int faults = 0;
  FaultSpan span = FaultSpan::Once;
  qint32 number = 0;
  EngineFault fault = EngineFault::Raise;
  std::function<void()> onFault;
  std::vector<std::weak_ptr<IxoFile>> files;
  int held = 0;
  bool knowsList = true;
  bool knowsContent = true;

  /// True when the call is to yield nothing.
  bool Enter(const QString& member, bool answersObject) {
    calls.append(member);
    ++count;
    const bool wrong = armedAt > 0 && (span == FaultSpan::Once ? count == armedAt : count >= armedAt);
    if (!wrong) {
      return false;
    }
    if (++faults == 1 && onFault) {
      onFault();
    }
    if (fault == EngineFault::YieldNothing && answersObject) {
      return true;
    }
    throw RunTimeError(number, QStringLiteral("%1 was made to fail").arg(member));
  }
};

namespace {

using StatePtr = std::shared_ptr<FailingEngine::State>;

std::shared_ptr<IxoFile> WrapFile(const StatePtr& state, std::shared_ptr<IxoFile> inner);
std::shared_ptr<IxoController> WrapController(const StatePtr& state, std::shared_ptr<IxoController> inner);

class FailingFiles final : public IxoFiles {
 public:
  FailingFiles(StatePtr state, std::shared_ptr<IxoFiles> inner)
      : state_(std::move(state)), inner_(std::move(inner)) {}

  std::shared_ptr<IxoFile> Item(const Variant& index) override {
    const bool nothing = state_->Enter(QStringLiteral("IxoFiles.Item"), true);
    return nothing ? nullptr : WrapFile(state_, inner_->Item(index));
  }
  void Remove(const Variant& index) override {
    state_->Enter(QStringLiteral("IxoFiles.Remove"), false);
    inner_->Remove(index);
  }
  void Clear() override {
    state_->Enter(QStringLiteral("IxoFiles.Clear"), false);
    inner_->Clear();
  }

 private:
  StatePtr state_;
  std::shared_ptr<IxoFiles> inner_;
};

class FailingSource final : public ContentSource {
 public:
  FailingSource(StatePtr state, std::unique_ptr<ContentSource> inner)
      : state_(std::move(state)), inner_(std::move(inner)) {}
  [[nodiscard]] QByteArray Read(qint64 most) override {
    state_->Enter(QStringLiteral("ContentSource.Read"), false);
    return inner_->Read(most);
  }
  [[nodiscard]] bool HadWrongSize() const override { return inner_->HadWrongSize(); }

 private:
  StatePtr state_;
  std::unique_ptr<ContentSource> inner_;
};

class FailingSink final : public ContentSink {
 public:
  FailingSink(StatePtr state, std::unique_ptr<ContentSink> inner)
      : state_(std::move(state)), inner_(std::move(inner)) {}
  void Write(const QByteArray& piece) override {
    state_->Enter(QStringLiteral("ContentSink.Write"), false);
    inner_->Write(piece);
  }
  [[nodiscard]] std::optional<QString> TemporaryName() const override { return inner_->TemporaryName(); }
  [[nodiscard]] SeenItem Commit() override {
    state_->Enter(QStringLiteral("ContentSink.Commit"), false);
    return inner_->Commit();
  }

 private:
  StatePtr state_;
  std::unique_ptr<ContentSink> inner_;
};

class FailingFile final : public IxoFile {
 public:
  FailingFile(StatePtr state, std::shared_ptr<IxoFile> inner)
      : state_(std::move(state)), inner_(std::move(inner)) {
    ++state_->held;
  }
  ~FailingFile() override { --state_->held; }
  FailingFile(const FailingFile&) = delete;
  FailingFile& operator=(const FailingFile&) = delete;

  Variant Value() override { return Inner("Value").Value(); }
  void PutValue(const Variant& value) override { Inner("PutValue").PutValue(value); }
  void PutNewValue(const Variant& value, const FileTraits& traits) override {
    Inner("PutNewValue").PutNewValue(value, traits);
  }
  std::unique_ptr<ContentSource> OpenSource(qint64 offset = 0) override {
    return state_->knowsContent
               ? std::make_unique<FailingSource>(state_, Inner("OpenSource").OpenSource(offset))
               : IxoFile::OpenSource(offset);
  }
  std::unique_ptr<ContentSink> OpenSink(const SinkRequest& request) override {
    return state_->knowsContent ? std::make_unique<FailingSink>(state_, Inner("OpenSink").OpenSink(request))
                                : IxoFile::OpenSink(request);
  }
  std::vector<ReadResult> ReadMany(const QStringList& names) override {
    return state_->knowsContent ? Inner("ReadMany").ReadMany(names) : IxoFile::ReadMany(names);
  }
  std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override {
    return state_->knowsContent ? Inner("WriteMany").WriteMany(files) : IxoFile::WriteMany(files);
  }
  std::optional<QString> LinkText() override {
    return state_->knowsContent ? Inner("LinkText").LinkText() : IxoFile::LinkText();
  }
  void CreateLink(const QString& name, const QString& text) override {
    state_->knowsContent ? Inner("CreateLink").CreateLink(name, text) : IxoFile::CreateLink(name, text);
  }
  FileTraits TraitsOf(const FileEntry& child) override {
    return state_->knowsContent ? Inner("TraitsOf").TraitsOf(child) : IxoFile::TraitsOf(child);
  }
  /// No calls of the engine's: nothing is asked for.
  void ForgetLearnt() override { inner_->ForgetLearnt(); }
  qint64 DateStep() override { return inner_->DateStep(); }
  bool HasTemporaryNames() override { return inner_->HasTemporaryNames(); }
  bool TakesFreshNames() override { return inner_->TakesFreshNames(); }
  bool HasLostLine() noexcept override { return inner_->HasLostLine(); }
  bool KeepsTraits() override { return inner_->KeepsTraits(); }
  bool CanHoldFolders() override { return inner_->CanHoldFolders(); }
  FileTraits Traits() override { return Inner("Traits").Traits(); }
  void SetTraits(const FileTraits& traits) override { Inner("SetTraits").SetTraits(traits); }
  void TakeBack() override { Inner("TakeBack").TakeBack(); }
  qint32 Attribute() override { return Inner("Attribute").Attribute(); }
  Variant DateCreated() override { return Inner("DateCreated").DateCreated(); }
  Variant DateLastAccessed() override { return Inner("DateLastAccessed").DateLastAccessed(); }
  Variant DateLastModified() override { return Inner("DateLastModified").DateLastModified(); }
  Variant FileNames(const QString& option) override { return Inner("FileNames").FileNames(option); }
  void ListInBatches(const ListingReceiver& receive) override {
    if (state_->knowsList) {
      Inner("ListInBatches").ListInBatches(receive);
    } else {
      IxoFile::ListInBatches(receive);
    }
  }
  Listing List() override { return state_->knowsList ? Inner("List").List() : IxoFile::List(); }
  std::shared_ptr<IxoFiles> Files() override {
    if (state_->Enter(QStringLiteral("IxoFile.Files"), true)) {
      return nullptr;
    }
    return std::make_shared<FailingFiles>(state_, inner_->Files());
  }
  qint32 Index() override { return Inner("Index").Index(); }
  QString Name() override { return Inner("Name").Name(); }
  QString Path() override { return Inner("Path").Path(); }
  qint32 Size() override { return Inner("Size").Size(); }
  qint64 Size64() override { return Inner("Size64").Size64(); }
  std::optional<QString> Identity() override { return Inner("Identity").Identity(); }
  QStringList FolderIdentities() override { return Inner("FolderIdentities").FolderIdentities(); }
  /// Asks for nothing that could fail.
  QString IdentityScope() override { return inner_->IdentityScope(); }
  QString Type() override { return Inner("Type").Type(); }
  QStringList Details() override { return Inner("Details").Details(); }
  std::shared_ptr<IxoFile> OpenFile(const QString& name, const QString& option) override {
    const bool nothing = state_->Enter(QStringLiteral("IxoFile.OpenFile"), true);
    return nothing ? nullptr : WrapFile(state_, inner_->OpenFile(name, option));
  }
  std::shared_ptr<IxoFile> CreateNewFile(const QString& name) override {
    const bool nothing = state_->Enter(QStringLiteral("IxoFile.OpenFile"), true);
    return nothing ? nullptr : WrapFile(state_, inner_->CreateNewFile(name));
  }
  std::shared_ptr<IxoFile> CreateClosedFolder(const QString& name) override {
    const bool nothing = state_->Enter(QStringLiteral("IxoFile.OpenFile"), true);
    return nothing ? nullptr : WrapFile(state_, inner_->CreateClosedFolder(name));
  }
  void Hold() override { Inner("Hold").Hold(); }
  /// Asks for nothing that could fail.
  void LetGo() noexcept override { inner_->LetGo(); }
  bool LeadsNowhere() override { return Inner("LeadsNowhere").LeadsNowhere(); }
  QStringList RefusedNames() override { return Inner("RefusedNames").RefusedNames(); }
  bool IsKnownAbsent(const QString& name) override { return Inner("IsKnownAbsent").IsKnownAbsent(name); }
  std::optional<std::shared_ptr<IxoFile>> LookFor(const QString& name) override {
    if (!state_->knowsContent || state_->Enter(QStringLiteral("IxoFile.LookFor"), true)) {
      return IxoFile::LookFor(name);
    }
    auto found = inner_->LookFor(name);
    return found && *found ? std::optional(WrapFile(state_, *found)) : found;
  }
  std::shared_ptr<IxoFile> MakeFolder(const QString& name, bool closed) override {
    if (!state_->knowsContent || state_->Enter(QStringLiteral("IxoFile.MakeFolder"), true)) {
      return IxoFile::MakeFolder(name, closed);
    }
    auto made = inner_->MakeFolder(name, closed);
    return made ? WrapFile(state_, std::move(made)) : nullptr;
  }
  std::shared_ptr<IxoFile> OpenListed(const FileEntry& child) override {
    if (!state_->knowsContent) {
      return IxoFile::OpenListed(child);
    }
    const bool nothing = state_->Enter(QStringLiteral("IxoFile.OpenFile"), true);
    return nothing ? nullptr : WrapFile(state_, inner_->OpenListed(child));
  }
  /// No call of the engine's: it is known from the start.
  bool ListingTellsAll() override { return state_->knowsContent && inner_->ListingTellsAll(); }
  bool SeesArrivals() override { return state_->knowsContent && inner_->SeesArrivals(); }
  void DeleteSeen(const Listing& children) override { Inner("DeleteSeen").DeleteSeen(children); }
  void Flush() override { Inner("Flush").Flush(); }
  void Copy(const QString& destination, const QString& option, const ItemObserver& observer = {}) override {
    Inner("Copy").Copy(destination, option, observer);
  }
  void Delete(const QString& option, const ItemObserver& observer = {}) override {
    Inner("Delete").Delete(option, observer);
  }
  void DeleteAlone() override { Inner("DeleteAlone").DeleteAlone(); }
  /// No call of the engine's: nothing is asked for or changed.
  std::vector<Leftover> TakeLeftovers() override { return inner_->TakeLeftovers(); }
  bool CanRun() override { return inner_->CanRun(); }
  Variant Execute(const QString& command, const Variant& parameter) override {
    return Inner("Execute").Execute(command, parameter);
  }
  void Move(const QString& destination, const QString& option) override {
    Inner("Move").Move(destination, option);
  }
  Variant Run(const QString& option) override { return Inner("Run").Run(option); }

 private:
  IxoFile& Inner(const char* member) {
    state_->Enter(QStringLiteral("IxoFile.") + QLatin1StringView(member), false);
    return *inner_;
  }

  StatePtr state_;
  std::shared_ptr<IxoFile> inner_;
};

class FailingController final : public IxoController {
 public:
  FailingController(StatePtr state, std::shared_ptr<IxoController> inner)
      : state_(std::move(state)), inner_(std::move(inner)) {}

  std::shared_ptr<IxoFiles> Files() override {
    if (state_->Enter(QStringLiteral("IxoController.Files"), true)) {
      return nullptr;
    }
    return std::make_shared<FailingFiles>(state_, inner_->Files());
  }
  qint32 Index() override {
    state_->Enter(QStringLiteral("IxoController.Index"), false);
    return inner_->Index();
  }
  /// No call of the engine's: it is known from the start.
  bool IsCaseSensitive() override { return inner_->IsCaseSensitive(); }
  /// As well.
  QString Notice() override { return inner_->Notice(); }
  QStringList Details() override {
    state_->Enter(QStringLiteral("IxoController.Details"), false);
    return inner_->Details();
  }
  QString Name() override {
    state_->Enter(QStringLiteral("IxoController.Name"), false);
    return inner_->Name();
  }
  std::shared_ptr<IxoFile> OpenFile(const QString& name, const QString& option) override {
    const bool nothing = state_->Enter(QStringLiteral("IxoController.OpenFile"), true);
    return nothing ? nullptr : WrapFile(state_, inner_->OpenFile(name, option));
  }
  std::shared_ptr<IxoFile> OpenKnownFolder(const QString& name, const QString& folder) override {
    if (!state_->knowsList) {
      return IxoController::OpenKnownFolder(name, folder);
    }
    const bool nothing = state_->Enter(QStringLiteral("IxoController.OpenKnownFolder"), true);
    return nothing ? nullptr : WrapFile(state_, inner_->OpenKnownFolder(name, folder));
  }

 private:
  StatePtr state_;
  std::shared_ptr<IxoController> inner_;
};

class FailingControllers final : public IxoControllers {
 public:
  FailingControllers(StatePtr state, std::shared_ptr<IxoControllers> inner)
      : state_(std::move(state)), inner_(std::move(inner)) {}

  std::shared_ptr<IxoController> Item(const Variant& index) override {
    const bool nothing = state_->Enter(QStringLiteral("IxoControllers.Item"), true);
    return nothing ? nullptr : WrapController(state_, inner_->Item(index));
  }
  void Remove(const Variant& index) override {
    state_->Enter(QStringLiteral("IxoControllers.Remove"), false);
    inner_->Remove(index);
  }

 private:
  StatePtr state_;
  std::shared_ptr<IxoControllers> inner_;
};

/// Taking counts as the AddController that it stands for.
class FailingOpening final : public ControllerOpening {
 public:
  FailingOpening(StatePtr state, std::unique_ptr<ControllerOpening> inner)
      : state_(std::move(state)), inner_(std::move(inner)) {}

  std::shared_ptr<IxoController> Take(size_t position) override {
    const bool nothing = state_->Enter(QStringLiteral("IxoWorkspace.AddController"), true);
    return nothing ? nullptr : WrapController(state_, inner_->Take(position));
  }
  void Cancel() override { inner_->Cancel(); }

 private:
  StatePtr state_;
  std::unique_ptr<ControllerOpening> inner_;
};

class FailingWorkspace final : public IxoWorkspace {
 public:
  FailingWorkspace(StatePtr state, std::shared_ptr<IxoWorkspace> inner)
      : state_(std::move(state)), inner_(std::move(inner)) {}

  std::shared_ptr<IxoControllers> Controllers() override {
    if (state_->Enter(QStringLiteral("IxoWorkspace.Controllers"), true)) {
      return nullptr;
    }
    return std::make_shared<FailingControllers>(state_, inner_->Controllers());
  }
  Variant ProviderNames(const QString& option) override {
    state_->Enter(QStringLiteral("IxoWorkspace.ProviderNames"), false);
    return inner_->ProviderNames(option);
  }
  ConnectionHelp HelpFor(const QString& provider) override { return inner_->HelpFor(provider); }
  std::shared_ptr<IxoController> AddController(const QString& name, const QString& provider,
                                               const QString& machine, const QString& option) override {
    const bool nothing = state_->Enter(QStringLiteral("IxoWorkspace.AddController"), true);
    return nothing ? nullptr : WrapController(state_, inner_->AddController(name, provider, machine, option));
  }
  std::unique_ptr<ControllerOpening> OpenControllers(
      const std::vector<ControllerRequest>& requests) override {
    return std::make_unique<FailingOpening>(state_, inner_->OpenControllers(requests));
  }

 private:
  StatePtr state_;
  std::shared_ptr<IxoWorkspace> inner_;
};

class FailingWorkspaces final : public IxoWorkspaces {
 public:
  FailingWorkspaces(StatePtr state, std::shared_ptr<IxoWorkspaces> inner)
      : state_(std::move(state)), inner_(std::move(inner)) {}

  std::shared_ptr<IxoWorkspace> Item(const Variant& index) override {
    if (state_->Enter(QStringLiteral("IxoWorkspaces.Item"), true)) {
      return nullptr;
    }
    auto inner = inner_->Item(index);
    return inner ? std::make_shared<FailingWorkspace>(state_, std::move(inner)) : nullptr;
  }

 private:
  StatePtr state_;
  std::shared_ptr<IxoWorkspaces> inner_;
};

std::shared_ptr<IxoFile> WrapFile(const StatePtr& state, std::shared_ptr<IxoFile> inner) {
  if (!inner) {
    return nullptr;
  }
  std::erase_if(state->files, [](const std::weak_ptr<IxoFile>& file) { return file.expired(); });
  const bool known =
      std::any_of(state->files.begin(), state->files.end(),
                  [&inner](const std::weak_ptr<IxoFile>& file) { return file.lock() == inner; });
  if (!known) {
    state->files.push_back(inner);
  }
  return std::make_shared<FailingFile>(state, std::move(inner));
}

std::shared_ptr<IxoController> WrapController(const StatePtr& state, std::shared_ptr<IxoController> inner) {
  return inner ? std::make_shared<FailingController>(state, std::move(inner)) : nullptr;
}

}  // namespace

FailingEngine::FailingEngine(std::shared_ptr<IxoEngine> inner)
    : inner_(std::move(inner)), state_(std::make_shared<State>()) {}

FailingEngine::~FailingEngine() = default;

std::shared_ptr<IxoWorkspaces> FailingEngine::Workspaces() {
  if (state_->Enter(QStringLiteral("IxoEngine.Workspaces"), true)) {
    return nullptr;
  }
  return std::make_shared<FailingWorkspaces>(state_, inner_->Workspaces());
}

void FailingEngine::Arm(int call, FaultSpan span, qint32 number, EngineFault fault) {
  state_->count = 0;
  state_->faults = 0;
  state_->armedAt = call;
  state_->span = span;
  state_->number = number;
  state_->fault = fault;
}

void FailingEngine::Disarm() {
  state_->armedAt = 0;
}

int FailingEngine::FaultCount() const {
  return state_->faults;
}

void FailingEngine::SetOnFault(std::function<void()> hook) {
  state_->onFault = std::move(hook);
}

void FailingEngine::SetKnowsContent(bool on) {
  state_->knowsContent = on;
}

void FailingEngine::SetKnowsList(bool on) {
  state_->knowsList = on;
}

int FailingEngine::CallCount() const {
  return static_cast<int>(state_->calls.size());
}

const QStringList& FailingEngine::Calls() const {
  return state_->calls;
}

void FailingEngine::ClearCalls() {
  state_->calls.clear();
}

int FailingEngine::LiveFiles() const {
  return static_cast<int>(LiveFileNames().size());
}

QStringList FailingEngine::LiveFileNames() const {
  QStringList names;
  for (const auto& file : state_->files) {
    if (const auto alive = file.lock()) {
      names.append(alive->Path() + alive->Name());
    }
  }
  return names;
}

int FailingEngine::HeldFiles() const {
  return state_->held;
}

}  // namespace trevane::test
