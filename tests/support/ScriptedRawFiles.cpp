#include "tests/support/ScriptedRawFiles.h"

#include "engine/files/ProviderError.h"

#include <utility>

namespace trevane::test {

namespace {

constexpr qint32 kLineLost = error::kWin32Error + 64;

}  // namespace

class ScriptedRawFiles::Writer final : public RawWriter {
 public:
  Writer(ScriptedRawFiles& server, QString path) : server_(server), path_(std::move(path)) {}

  void Write(const QByteArray& piece) override {
    const auto store = [&](const QByteArray& bytes) {
      server_.RequireSpace(path_, bytes.size());
      server_.files[path_] += bytes;
    };
    server_.Do(
        {}, path_, [&] { store(piece); }, [&] { store(piece.first(piece.size() / 2)); });
  }

  void Close() override {
    server_.Do(QStringLiteral("Close ") + path_, path_, [&] {
      if (server_.quirks_.refusesAtClose) {
        try {
          server_.RequireName(path_);
        } catch (const RunTimeError&) {
          server_.files.erase(path_);
          throw;
        }
      }
      server_.files[path_] += server_.quirks_.appends;
    });
  }

 private:
  ScriptedRawFiles& server_;
  QString path_;
};

class ScriptedRawFiles::Source final : public ContentSource {
 public:
  Source(ScriptedRawFiles& server, QString path) : server_(server), path_(std::move(path)) {}

  QByteArray Read(qint64 most) override {
    QByteArray piece;
    server_.Do({}, path_, [&] { piece = server_.files.at(path_).mid(at_, most); });
    at_ += piece.size();
    return piece;
  }

 private:
  ScriptedRawFiles& server_;
  QString path_;
  qsizetype at_ = 0;
};

void ScriptedRawFiles::Arm(int call, Fault fault, FaultSpan span, qint32 number) {
  count_ = 0;
  faults_ = 0;
  armedAt_ = call;
  fault_ = fault;
  span_ = span;
  number_ = number;
  if (fault == Fault::LoseLine || fault == Fault::LoseAnswer) {
    number_ = kLineLost;
  } else if (fault == Fault::Cancel) {
    number_ = error::kCancelled;
  }
}

void ScriptedRawFiles::ClearCalls() {
  calls_.clear();
  count_ = 0;
}

void ScriptedRawFiles::Do(const QString& call, const QString& path, const std::function<void()>& work,
                          const std::function<void()>& half) {
  if (!call.isEmpty()) {
    calls_ += call;
  }
  if (hook_) {
    hook_(call);
  }
  ++count_;
  const bool isLost = fault_ == Fault::LoseLine || fault_ == Fault::LoseAnswer || fault_ == Fault::Cancel;
  const bool isShielded = fault_ == Fault::Cancel && putBacks_ > 0;
  const bool isFault =
      armedAt_ > 0 && !isShielded &&
      (count_ == armedAt_ || (count_ > armedAt_ && (isLost || span_ == FaultSpan::FromThenOn)));
  if (!isFault) {
    work();
    return;
  }
  ++faults_;
  if (fault_ == Fault::DoAndFail || (fault_ == Fault::LoseAnswer && count_ == armedAt_)) {
    work();
  } else if ((fault_ == Fault::LoseLine || fault_ == Fault::Cancel) && count_ == armedAt_ && half) {
    half();
  }
  Fail(number_, path);
}

SeenItem ScriptedRawFiles::ItemOf(const QString& path) const {
  SeenItem item;
  item.entry.name = path;
  item.entry.size = quirks_.tellsSizes ? files.at(path).size() : -1;
  return item;
}

void ScriptedRawFiles::RequireName(const QString& path) const {
  if (quirks_.takesName && !quirks_.takesName(path)) {
    Fail(error::kInvalidName, path);
  }
}

void ScriptedRawFiles::RequireSpace(const QString& path, qint64 more) const {
  qint64 all = more;
  for (const auto& [name, content] : files) {
    all += content.size();
  }
  if (quirks_.space >= 0 && all > quirks_.space) {
    Fail(error::kDiskFull, path);
  }
}

std::optional<SeenItem> ScriptedRawFiles::Find(const QString& path) {
  std::optional<SeenItem> found;
  Do(QStringLiteral("Find ") + path, path, [&] {
    if (files.contains(path)) {
      found = ItemOf(path);
    }
  });
  return found;
}

std::vector<std::optional<SeenItem>> ScriptedRawFiles::FindMany(const QStringList& paths) {
  std::vector<std::optional<SeenItem>> found;
  Do(QStringLiteral("List"), QString(), [&] {
    for (const QString& path : paths) {
      found.push_back(files.contains(path) ? std::optional(ItemOf(path)) : std::nullopt);
    }
  });
  return found;
}

std::unique_ptr<ContentSource> ScriptedRawFiles::OpenSource(const QString& path) {
  Do(QStringLiteral("Read ") + path, path, [&] {
    if (!files.contains(path)) {
      Fail(error::kNotFound, path);
    }
  });
  return std::make_unique<Source>(*this, path);
}

std::unique_ptr<RawWriter> ScriptedRawFiles::Store(const QString& path, Creation creation, bool isPrivate) {
  const auto store = [&] {
    if (!quirks_.refusesAtClose) {
      RequireName(path);
    }
    if (creation == Creation::New && quirks_.can.exclusiveCreate && files.contains(path)) {
      Fail(error::kExists, path);
    }
    files[path].clear();
    if (isPrivate) {
      traits[path].permissions = 0600;
    }
  };
  Do(QStringLiteral("Store ") + path, path, store, store);
  return std::make_unique<Writer>(*this, path);
}

void ScriptedRawFiles::Rename(const QString& from, const QString& to) {
  Do(QStringLiteral("Rename %1 %2").arg(from, to), from, [&] {
    if (!quirks_.can.canRename) {
      Fail(error::kNotSupported, from);
    }
    RequireName(to);
    if (!files.contains(from)) {
      Fail(error::kNotFound, from);
    }
    if (files.contains(to) && !quirks_.can.renameReplaces) {
      Fail(error::kExists, to);
    }
    files[to] = std::exchange(files[from], {});
    files.erase(from);
    if (traits.contains(from)) {
      traits[to] = traits[from];
      traits.erase(from);
    }
  });
}

void ScriptedRawFiles::Remove(const QString& path) {
  Do(QStringLiteral("Remove ") + path, path, [&] {
    if (files.erase(path) == 0) {
      Fail(error::kNotFound, path);
    }
    traits.erase(path);
  });
}

void ScriptedRawFiles::CreateFolder(const QString& path) {
  Do(QStringLiteral("CreateFolder ") + path, path, [] {});
}

FileTraits ScriptedRawFiles::Traits(const QString& path) {
  FileTraits found;
  Do(QStringLiteral("Traits ") + path, path, [&] { found = traits[path]; });
  return found;
}

void ScriptedRawFiles::SetTraits(const QString& path, const FileTraits& given) {
  Do(QStringLiteral("SetTraits ") + path, path, [&] {
    if (given.permissions) {
      traits[path].permissions = given.permissions;
    }
    if (given.modified.IsPresent()) {
      traits[path].modified = given.modified;
    }
  });
}

}  // namespace trevane::test
