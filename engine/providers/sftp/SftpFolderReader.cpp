#include "engine/providers/sftp/SftpFolderReader.h"

#include "engine/files/BatchedListing.h"
#include "engine/files/ProviderError.h"
#include "engine/model/ItemName.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/providers/sftp/SftpItem.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <optional>
#include <utility>
#include <vector>

namespace trevane::sftp {
namespace {

constexpr std::size_t kAhead = 16;
/// A folder with more entries is one that never ends.
constexpr qsizetype kMostEntries = 1'000'000;
constexpr qsizetype kOfEmpty = 1000;
/// Of names and lines, as the server sent them: with a million entries 256 for each.
constexpr qint64 kMostBytes = qint64{256} * 1024 * 1024;
/// Of a name; more than any path has.
constexpr qsizetype kMostOfName = 4096;
/// Of a name that nothing can be opened by.
constexpr qsizetype kShownOfRefused = 255;
/// Links of so many answers are followed at once.
constexpr std::size_t kMostUnfollowed = 16;

class FolderReader {
 public:
  FolderReader(Server& server, const Place& folder, const ListingReceiver& receive, Request* lookBehind)
      : server_(server),
        folder_(folder),
        line_(server.Line(folder.text)),
        batches_(receive),
        lookBehind_(lookBehind) {}

  void Run() {
    Open();
    bool wantsMore = true;
    while (wantsMore && !isAtEnd_) {
      while (ahead_.size() < kAhead) {
        ahead_.push_back(line_->ReadFolder(handle_.Get()));
      }
      if (answers_ == 0) {
        LookBehind();
      }
      ReadNext();
      while (wantsMore && !parts_.empty() &&
             (parts_.size() > kMostUnfollowed || IsFollowed(parts_.front()))) {
        wantsMore = HandOver();
      }
    }
    if (answers_ > kAhead) {
      LookBehind();
    }
    while (wantsMore && !parts_.empty()) {
      wantsMore = HandOver();
    }
    if (wantsMore) {
      batches_.Finish();
    }
  }

 private:
  struct Child {
    QByteArray name;
    bool isRefused = false;
    Attributes own;
    /// Where it leads, or what it is where the listing did not tell.
    Request asked;
  };
  using Part = std::vector<Child>;

  [[nodiscard]] QByteArray PathOf(const QByteArray& name) const {
    return folder_.path.endsWith('/') ? folder_.path + name : folder_.path + '/' + name;
  }

  void Open() {
    Outcome<HandleAnswer> opened = line_->OpenFolder(folder_.path).Handle();
    if (opened) {
      handle_ = OpenHandle(line_, opened->handle);
      return;
    }
    const qint32 number = NumberOf(opened.status);
    if (number == error::kNotFound || number == providererror::kGeneralFailure) {
      const std::optional<Attributes> item = server_.Follow(folder_);
      if (item && !item->IsFolder()) {
        Fail(providererror::kNotAFolder, folder_.text);
      }
    }
    throw StatusError(opened.status, folder_.text);
  }

  /// Behind the requests that read the folder: it costs no wait unless more of them were needed.
  void LookBehind() {
    if (lookBehind_ != nullptr) {
      *lookBehind_ = line_->Lstat(folder_.path);
    }
  }

  void ReadNext() {
    Request request = std::move(ahead_.front());
    ahead_.pop_front();
    ++answers_;
    Outcome<NameAnswer> names = request.Names();
    if (!names) {
      if (names.status.code != status::kEnd) {
        throw StatusError(names.status, folder_.text);
      }
      isAtEnd_ = true;
      return;
    }
    Count(names->names);
    Part part;
    part.reserve(names->names.size());
    for (const NameAnswer::Name& name : names->names) {
      if (name.name != "." && name.name != "..") {
        part.push_back(ChildOf(name));
      }
    }
    parts_.push_back(std::move(part));
  }

  void Count(const std::vector<NameAnswer::Name>& names) {
    // An empty answer counts, too: it does not end the folder.
    count_ += names.empty() ? kOfEmpty : static_cast<qsizetype>(names.size());
    if (count_ > kMostEntries) {
      Fail(providererror::kDeviceIo, QStringLiteral("The listing of the folder does not end"), folder_.text);
    }
    for (const NameAnswer::Name& name : names) {
      bytes_ += name.name.size() + name.line.size();
    }
    if (bytes_ > kMostBytes) {
      Fail(providererror::kDeviceIo,
           QStringLiteral("The listing of the folder has more than %1 MiB").arg(kMostBytes / 1024 / 1024),
           folder_.text);
    }
  }

  [[nodiscard]] Child ChildOf(const NameAnswer::Name& name) {
    // A path made of such a name would lead elsewhere: nothing is asked about it.
    if (!Names::IsName(name.name) || name.name.size() > kMostOfName) {
      return {name.name.first(std::min(name.name.size(), kShownOfRefused)), true, name.attributes, {}};
    }
    Child child{name.name, false, name.attributes, {}};
    if (!child.own.mode) {
      child.asked = line_->Lstat(PathOf(name.name));
    } else if (child.own.IsLink()) {
      child.asked = line_->Stat(PathOf(name.name));
    }
    return child;
  }

  [[nodiscard]] static bool IsFollowed(const Part& part) {
    for (const Child& child : part) {
      if (!child.asked.IsAnswered()) {
        return false;
      }
    }
    return true;
  }

  /// False when the receiver takes no more.
  [[nodiscard]] bool HandOver() {
    Part part = std::move(parts_.front());
    parts_.pop_front();
    for (Child& child : part) {
      std::optional<FileEntry> entry = EntryOfChild(child);
      if (entry && !batches_.Add(*std::move(entry))) {
        return false;
      }
    }
    return true;
  }

  /// As text that is no valid name of an item, so that whoever uses listings refuses and counts it.
  [[nodiscard]] QString RefusedName(const QByteArray& name) const {
    QString text = server_.NamesOf().FromServer(name);
    return IsValidItemName(text) ? text + u'/' : text;
  }

  /// Nothing for one that vanished.
  [[nodiscard]] std::optional<FileEntry> EntryOfChild(Child& child) {
    if (child.isRefused) {
      return EntryOf(RefusedName(child.name), child.own, std::nullopt, false);
    }
    const QString name = server_.NamesOf().FromServer(child.name);
    if (child.asked.IsUnderWay() && !child.own.mode) {
      Outcome<Attributes> own = child.asked.Item();
      if (!own) {
        return NumberOf(own.status) == error::kNotFound
                   ? std::nullopt
                   : std::optional(EntryOf(name, child.own, std::nullopt, false));
      }
      child.own = *std::move(own);
      if (child.own.IsLink()) {
        child.asked = line_->Stat(PathOf(child.name));
      }
    }
    if (!child.asked.IsUnderWay()) {
      return EntryOf(name, child.own, std::nullopt, false);
    }
    Outcome<Attributes> target = child.asked.Item();
    const bool leadsNowhere = !target && NumberOf(target.status) == error::kNotFound;
    return EntryOf(name, child.own, target.value, leadsNowhere);
  }

  Server& server_;
  const Place& folder_;
  const std::shared_ptr<Session> line_;
  BatchedListing batches_;
  OpenHandle handle_;
  std::deque<Request> ahead_;
  std::deque<Part> parts_;
  qsizetype count_ = 0;
  qint64 bytes_ = 0;
  std::size_t answers_ = 0;
  bool isAtEnd_ = false;
  /// Null where nobody asks for it.
  Request* const lookBehind_;
};

}  // namespace

void ReadFolder(Server& server, const Place& folder, const ListingReceiver& receive, Request* lookBehind) {
  FolderReader(server, folder, receive, lookBehind).Run();
}

}  // namespace trevane::sftp
