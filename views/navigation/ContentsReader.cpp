#include "views/navigation/ContentsReader.h"

#include "base/RunTimeError.h"
#include "engine/items/clsIxoFile.h"
#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/Addresses.h"
#include "views/navigation/CurrentLocation.h"
#include "views/navigation/DisplayRequests.h"
#include "views/navigation/FolderTreeBuilder.h"
#include "views/tree/FolderNode.h"

namespace trevane {

std::optional<FolderContents> ContentsReader::Read(FolderNode& node) {
  const QString text = node.Text();
  for (;;) {
    clsIxoFile folder = files_.FileAt(location_.Address(), LookUp::Navigate);
    Listing entries = folder.Result() == 0 ? folder.List() : Listing();
    const RunTimeError failure(folder.Result(), folder.ResultText());
    QString name = folder.Name();
    // The file object may not have got as far as to know its name.
    if (name.isEmpty()) {
      name = text;
    }
    if (failure.Number() == 0) {
      if (location_.Node() == &node && folder.FoundPieces().join(kAddressSeparator) != location_.Address()) {
        // The operations on the entries take exact names.
        builder_.RespellNodes(node, folder.FoundPieces());
        location_.UpdateAddress();
      }
      return FolderContents{name, folder.IsOnController(), std::move(entries)};
    }
    if (failure.Number() != error::kDeviceNotReady) {
      throw failure;
    }
    if (!AsksForDiskAgain(name, failure.Description())) {
      return std::nullopt;
    }
  }
}

bool ContentsReader::AsksForDiskAgain(const QString& name, const QString& reason) {
  Message message =
      FailureMessage(QStringLiteral("Place a disk in your drive(") + name + QStringLiteral(")."),
                     {.item = name, .reason = reason});
  message.buttons = PromptButtons::RetryCancel;
  return files_.Prompts().ShowMessage(message) == PromptAnswer::Retry && !requests_.IsCancelled();
}

}  // namespace trevane
