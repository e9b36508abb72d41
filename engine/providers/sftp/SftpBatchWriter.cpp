#include "engine/providers/sftp/SftpBatchWriter.h"

#include "base/LowerCase.h"
#include "engine/files/NameLadder.h"
#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/model/BatchWatch.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/providers/sftp/SftpItem.h"
#include "engine/providers/sftp/SftpSink.h"
#include "engine/providers/sftp/SftpUnflushed.h"

#include <QSet>

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace trevane::sftp {
namespace {

constexpr quint32 kPrivate = 0600;

/// Some files of a batch, which are written together.
class BatchWriter {
 public:
  BatchWriter(std::shared_ptr<Server> server, const std::vector<NewContent>& files,
              std::vector<WriteResult>& results)
      : server_(std::move(server)), contents_(files), results_(results) {}
  ~BatchWriter() { RemoveBuilt(); }
  BatchWriter(const BatchWriter&) = delete;
  BatchWriter& operator=(const BatchWriter&) = delete;

  /// Writes the files from `first` to `last`. Returns the first one that is to be written in another turn, or
  /// alone: `last` when all were written, or one failed.
  std::size_t Write(std::size_t first, std::size_t last) {
    Open(first, last);
    Send();
    // What has begun to get its name gets it, and the results tell it.
    const PutBack uncancelled(&Line());
    Place();
    Check();
    return deferred_.value_or(last);
  }

  [[nodiscard]] bool HasFailed() const noexcept { return failedAt_.has_value(); }
  /// The server refused to open more files at once.
  [[nodiscard]] bool WasLimited() const noexcept { return wasLimited_; }

 private:
  struct File {
    std::size_t at = 0;
    sftp::Place place;
    QByteArray built;
    bool isBuilt = false;
    NameRung rung = NameRung::Long;
    FileTraits traits;
    Request look;
    Request canonical;
    Request asked;
    Request set;
    OpenHandle handle;
    std::vector<Request> blocks;
  };

  [[nodiscard]] Session& Line() { return *server_->Line({}); }
  [[nodiscard]] const NewContent& ContentOf(const File& file) const { return contents_[file.at]; }
  [[nodiscard]] static QString FolderOf(const File& file) {
    return file.place.text.first(file.place.text.lastIndexOf(u'\\') + 1);
  }
  [[nodiscard]] bool IsNew(const File& file) const {
    return ContentOf(file).request.mode == SinkRequest::Mode::New;
  }

  /// Does `step` for one file after the other. Where one fails, all behind it are left out.
  template <class Step>
  void ForEach(const Step& step) {
    for (std::size_t i = 0; i < files_.size(); ++i) {
      if (results_[files_[i].at].failure) {
        continue;
      }
      try {
        static_cast<void>(server_->Line(ContentOf(files_[i]).name));
        step(files_[i]);
      } catch (const RunTimeError& failure) {
        Fail(i, failure);
        return;
      }
    }
  }

  void Fail(std::size_t i, const RunTimeError& failure) {
    Tell(files_[i].at, failure);
    LeaveOut(i);
  }

  /// Only the failure of the first file that has one is told: those behind it were not begun, or end as they
  /// stand.
  void Tell(std::size_t at, const RunTimeError& failure) {
    deferred_.reset();
    if (failedAt_ && *failedAt_ <= at) {
      return;
    }
    if (failedAt_) {
      results_[*failedAt_].failure.reset();
    }
    failedAt_ = at;
    results_[at].failure = failure;
  }

  /// The files from that one on are not placed.
  void LeaveOut(std::size_t from) {
    for (std::size_t i = from; i < files_.size(); ++i) {
      left_.push_back(std::move(files_[i]));
    }
    files_.resize(from);
  }

  /// The file, and those behind it, need another way.
  void Defer(std::size_t i) {
    deferred_ = files_[i].at;
    LeaveOut(i);
  }

  void Open(std::size_t first, std::size_t last) {
    const std::shared_ptr<Session> line = server_->Line({});
    for (std::size_t at = first; at < last; ++at) {
      File file;
      file.at = at;
      files_.push_back(std::move(file));
    }
    ForEach([&](File& file) {
      file.place = server_->At(ContentOf(file).name);
      if (file.place.IsTop()) {
        trevane::Fail(IsNew(file) ? error::kExists : error::kAccessDenied, file.place.text);
      }
      file.look = line->Lstat(file.place.path);
      file.canonical = server_->AskCanonical(file.place.folder);
    });
    for (std::size_t i = 0; i < files_.size(); ++i) {
      File& file = files_[i];
      const QString folder = FolderOf(file);
      file.rung = Server::Naming().FirstRung(server_->Key(), folder);
      if (file.rung == NameRung::InPlace) {
        Defer(i);
        break;
      }
      const QString name = MakeTemporaryName(nameladder::FormOf(file.rung), file.place.name);
      file.built = server_->At(folder + name).path;
      Attributes attributes;
      if (ContentOf(file).request.traits.permissions || !IsNew(file)) {
        attributes.mode = kPrivate;
      }
      file.isBuilt = true;
      file.asked =
          line->Open(file.built, openflag::kWrite | openflag::kCreate | openflag::kExclusive, attributes);
    }
    TakeLooks();
    TakeHandles(line);
  }

  void TakeLooks() {
    std::optional<std::size_t> odd;
    std::size_t i = 0;
    ForEach([&](File& file) {
      const std::optional<Attributes> existing = Server::TakeLook(file.look, file.place);
      file.traits = ContentOf(file).request.traits;
      if (existing && IsNew(file)) {
        trevane::Fail(error::kExists, file.place.text);
      }
      if (existing && (existing->IsLink() || !Line().Offers().posixRename)) {
        odd = std::min(odd.value_or(i), i);
      } else if (existing) {
        RequireReplaceable(*existing, file.place.text);
        file.traits = {.permissions = TraitsOf(*existing).permissions, .modified = file.traits.modified};
      }
      ++i;
    });
    if (odd && *odd < files_.size()) {
      Defer(*odd);
    }
  }

  void TakeHandles(const std::shared_ptr<Session>& line) {
    for (std::size_t i = 0; i < files_.size(); ++i) {
      File& file = files_[i];
      try {
        line->SetSubject(file.place.text);
        Outcome<HandleAnswer> opened = file.asked.Handle();
        if (opened) {
          file.handle = OpenHandle(line, opened->handle);
          continue;
        }
        file.isBuilt = false;
        const RunTimeError failure = server_->StoringError(opened.status, file.place);
        const bool isOfNumber =
            failure.Number() == kTooManyOpenFiles || failure.Number() == providererror::kGeneralFailure;
        wasLimited_ = isOfNumber && i > 0;
        if (wasLimited_) {
          line->LimitHandles();
        }
        // Alone it is tried under other names.
        if (isOfNumber || nameladder::After(file.rung, failure) != file.rung) {
          Defer(i);
          return;
        }
        throw failure;
      } catch (const RunTimeError& failure) {
        Fail(i, failure);
        return;
      }
    }
  }

  void Send() {
    Session& line = Line();
    ForEach([&](File& file) {
      const QByteArray& content = ContentOf(file).content;
      const auto block = static_cast<qsizetype>(line.Bounds().writeBlock);
      for (qsizetype at = 0; at < content.size(); at += block) {
        const QByteArrayView bytes = QByteArrayView(content).sliced(at, std::min(block, content.size() - at));
        file.blocks.push_back(line.Write(file.handle.Get(), static_cast<quint64>(at), bytes));
      }
      const Attributes attributes = AttributesOf(file.traits, SecondsNow());
      if (attributes != Attributes()) {
        file.set = line.SetItem(file.handle.Get(), attributes);
      }
      if (!IsNew(file) && line.Offers().fsync) {
        file.blocks.push_back(line.Fsync(file.handle.Get()));
      }
      file.asked = file.handle.Close();
    });
    ForEach([&](File& file) {
      for (Request& stored : file.blocks) {
        RequireStored(stored.Status(), file);
      }
      file.blocks.clear();
      if (file.set.IsUnderWay()) {
        const StatusAnswer set = file.set.Status();
        const qint32 number = set.IsOk() ? 0 : NumberOf(set);
        if (number != 0 && number != error::kAccessDenied && number != error::kNotSupported) {
          throw StatusError(set, file.place.text);
        }
        // As far as the server has them.
      }
      RequireStored(file.asked.Status(), file);
      BatchWatch::FileDone(ContentOf(file).content.size());
    });
  }

  void RequireStored(const StatusAnswer& answer, const File& file) {
    if (!answer.IsOk()) {
      throw server_->StoringError(answer, file.place);
    }
  }

  void Place() {
    Session& line = Line();
    const bool links = line.Offers().hardLink;
    // What stands there is looked at again where nothing else keeps another program's item.
    ForEach([&](File& file) {
      if (!IsNew(file) || !links) {
        file.look = line.Lstat(file.place.path);
      }
    });
    ForEach([&](File& file) {
      if (!file.look.IsUnderWay()) {
        return;
      }
      const std::optional<Attributes> existing = Server::TakeLook(file.look, file.place);
      if (existing && IsNew(file)) {
        trevane::Fail(error::kExists, file.place.text);
      }
      if (existing) {
        RequireReplaceable(*existing, file.place.text);
      }
    });
    ForEach([&](File& file) {
      if (!IsNew(file) && line.Offers().posixRename) {
        file.asked = line.PosixRename(file.built, file.place.path);
      } else if (IsNew(file) && links) {
        file.asked = line.HardLink(file.built, file.place.path);
      } else {
        file.asked = line.Rename(file.built, file.place.path);
      }
    });
    for (std::size_t i = 0; i < files_.size(); ++i) {
      TakePlaced(i);
    }
    std::erase_if(files_, [](const File& file) { return file.built.isEmpty(); });
  }

  /// Those behind one that failed stand under their names already.
  void TakePlaced(std::size_t i) {
    File& file = files_[i];
    const bool isLinked = IsNew(file) && Line().Offers().hardLink;
    try {
      static_cast<void>(server_->Line(file.place.text));
      const StatusAnswer placed = file.asked.Status();
      if (placed.IsOk()) {
        // The temporary name of a linked one is removed below.
        file.isBuilt = isLinked;
        return;
      }
      // It may be a disk without links, or a name that was taken meanwhile.
      RawServer raw(*server_, ContentOf(file).request.mode);
      raw.Rename(server_->NamesOf().PathFromServer(file.built), file.place.text);
      file.isBuilt = false;
    } catch (const RunTimeError& failure) {
      Tell(file.at, failure);
      left_.push_back(std::exchange(file, File()));
    }
  }

  void Check() {
    Session& line = Line();
    server_->ForgetCanonical();
    for (File& file : files_) {
      file.look = line.Lstat(file.place.path);
      file.canonical = server_->AskCanonical(file.place.folder);
      if (file.isBuilt) {
        file.asked = line.Remove(file.built);
      }
    }
    for (File& file : files_) {
      WriteResult& result = results_[file.at];
      try {
        static_cast<void>(server_->Line(file.place.text));
        const std::optional<Attributes> own = Server::TakeLook(file.look, file.place);
        if (!own) {
          trevane::Fail(error::kNotFound, file.place.text);
        }
        const QByteArray folder = server_->TakeCanonical(file.canonical, file.place.folder, file.place.text);
        result.item =
            SeenItem{server_->EntryAt(file.place, *own), server_->IdentityOf(folder, file.place.OwnName())};
        Server::Naming().Accept(server_->Key(), FolderOf(file), file.rung, true);
        server_->Written().Add(*server_, file.place.path);
        const StatusAnswer removed = file.isBuilt ? file.asked.Status() : StatusAnswer();
        file.isBuilt = !removed.IsOk() && NumberOf(removed) != error::kNotFound;
      } catch (const RunTimeError& failure) {
        if (!result.item) {
          Tell(file.at, failure);
        }
      }
    }
  }

  /// Also after a cancel, and where another thing failed first.
  void RemoveBuilt() noexcept {
    std::move(files_.begin(), files_.end(), std::back_inserter(left_));
    Session* const line = server_->LineIfOpen();
    const PutBack uncancelled(line);
    try {
      for (File& file : left_) {
        // Also one that may have been opened.
        file.blocks.clear();
        file.asked = {};
        file.handle.Reset();
        file.set = {};
        if (file.isBuilt && line != nullptr && !line->IsBroken()) {
          file.asked = line->Remove(file.built);
        }
      }
    } catch (...) {
      // Told below.
    }
    for (File& file : left_) {
      if (file.isBuilt) {
        LeaveBehind(file);
      }
    }
  }

  void LeaveBehind(File& file) noexcept {
    try {
      if (file.asked.IsUnderWay()) {
        const StatusAnswer removed = file.asked.Status();
        if (removed.IsOk() || NumberOf(removed) == error::kNotFound) {
          return;
        }
      }
    } catch (...) {
      // Told below as well: it may be there.
    }
    try {
      server_->Leftovers().push_back({server_->NamesOf().PathFromServer(file.built), false});
    } catch (...) {
      // Its name tells what it is when the folder is searched.
    }
  }

  const std::shared_ptr<Server> server_;
  const std::vector<NewContent>& contents_;
  std::vector<WriteResult>& results_;
  std::vector<File> files_;
  /// Those that are not placed.
  std::vector<File> left_;
  std::optional<std::size_t> deferred_;
  std::optional<std::size_t> failedAt_;
  bool wasLimited_ = false;
};

/// One file by a sink of its own.
bool WriteAlone(const std::shared_ptr<Server>& server, const NewContent& file, WriteResult& result) {
  try {
    const std::unique_ptr<ContentSink> sink = OpenSinkAt(server, file.name, file.request);
    sink->Write(file.content);
    result.item = sink->Commit();
    BatchWatch::FileDone(file.content.size());
    return true;
  } catch (const RunTimeError& failure) {
    result.failure = failure;
    return false;
  }
}

/// Where the turn of files that begins at `first` ends, at the latest at `last`: before a name that is
/// another's in a file system without case, or one that composes letters otherwise. Nothing tells whether the
/// server's is such a one. Looked for together both names would be free, and the second file would take the
/// first one's place.
std::size_t EndOfTurn(const std::vector<NewContent>& files, std::size_t first, std::size_t last) {
  QSet<QString> names;
  for (std::size_t at = first; at < last; ++at) {
    const QString name = LowerCase(files[at].name.normalized(QString::NormalizationForm_C));
    if (names.contains(name)) {
      return at;
    }
    names.insert(name);
  }
  return last;
}

}  // namespace

std::vector<WriteResult> WriteBatch(const std::shared_ptr<Server>& server,
                                    const std::vector<NewContent>& files) {
  std::vector<WriteResult> results(files.size());
  for (std::size_t at = 0; at < files.size();) {
    try {
      Session& line = *server->Line({});
      const int room = line.Bounds().handles - line.OpenHandles();
      const auto most = static_cast<std::size_t>(std::clamp(room, 1, static_cast<int>(content::kMostFiles)));
      const std::size_t first = at;
      const std::size_t last = EndOfTurn(files, first, std::min(first + most, files.size()));
      BatchWriter writer(server, files, results);
      at = writer.Write(first, last);
      if (writer.HasFailed()) {
        return results;
      }
      if (writer.WasLimited()) {
        continue;
      }
      const bool isDeferred = at < last;
      if (!isDeferred) {
        continue;
      }
    } catch (const RunTimeError& failure) {
      results[at].failure = failure;
      return results;
    }
    if (!WriteAlone(server, files[at], results[at])) {
      return results;
    }
    ++at;
  }
  return results;
}

}  // namespace trevane::sftp
