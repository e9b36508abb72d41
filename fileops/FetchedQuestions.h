#pragma once

#include "engine/fetched/FetchedFiles.h"
#include "fileops/OperationParts.h"

#include <QObject>

#include <functional>

namespace trevane {

class OperationGuard;
class clsIxoFile;

/// What the user is asked and told about files that were fetched to be opened: whether a changed one is put
/// back, and at the end which ones were not.
class FetchedQuestions final : public QObject {
  Q_OBJECT

 public:
  /// All of it outlives this object. `isBusy` reports that no box may be opened now; `refresh` shows the
  /// place anew that is displayed.
  FetchedQuestions(const OperationParts& parts, OperationGuard& guard, FetchedFiles& fetched,
                   std::function<bool()> isBusy, std::function<void()> refresh);

  /// Asks about the next file that was changed, if nothing else runs or is open.
  void AskNext();

  /// Ends the watching. Call it when the program ends, while the controllers are still there.
  void End();
  /// Names what was not put back; after End. Nobody is told when the system ends the program.
  void NameKept();

 private:
  void Ask(const FetchedFiles::File& file);
  void PutBack(FetchedFile& file, const QByteArray& content);
  void ShowAnew(const QString& address);
  [[nodiscard]] bool IsYes(const QString& question);

  OperationParts parts_;
  OperationGuard& guard_;
  FetchedFiles& fetched_;
  std::function<bool()> isBusy_;
  std::function<void()> refresh_;
  std::vector<FetchedFiles::Kept> kept_;
};

/// Opens a file of a controller without programs of its own: it is fetched first. A copy that was changed and
/// not put back is opened instead, if the user likes. Fails with a RunTimeError.
void RunFetched(FetchedFiles& fetched, clsIxoFile& file, UserPrompts& prompts);

}  // namespace trevane
