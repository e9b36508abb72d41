#include "views/navigation/ContentsReader.h"

#include "base/RunTimeError.h"
#include "engine/items/clsIxoFile.h"
#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/Addresses.h"
#include "views/navigation/ContentsReceiver.h"
#include "views/navigation/CurrentLocation.h"
#include "views/navigation/DisplayRequests.h"
#include "views/navigation/FolderTreeBuilder.h"
#include "views/tree/FolderNode.h"

#include <utility>

namespace trevane {

bool ContentsReader::Read(FolderNode& node, ContentsReceiver& receiver) {
  const QString text = node.Text();
  LookUp lookUp = LookUp::Shown;
  for (;;) {
    clsIxoFile folder = files_.FileAt(location_.Address(), lookUp);
    RunTimeError failure(folder.Result(), folder.ResultText());
    QString name = folder.Name();
    // The file object may not have got as far as to know its name.
    if (name.isEmpty()) {
      name = text;
    }
    if (failure.Number() == 0) {
      const QStringList found = folder.FoundPieces();
      // What is shown is what is there now, also right after a command that has looked.
      folder.ForgetLearnt();
      bool begun = false;
      const auto begin = [&] {
        begun = true;
        Respell(node, found);
        receiver.Begin(name, folder.IsOnController());
      };
      folder.ListInBatches([&](Listing&& entries) {
        // Events may have run since the call.
        if (requests_.IsCancelled()) {
          return false;
        }
        if (!begun) {
          begin();
        }
        return receiver.Add(std::move(entries));
      });
      failure = RunTimeError(folder.Result(), folder.ResultText());
      if (failure.Number() == 0) {
        if (!begun && !requests_.IsCancelled()) {
          begin();
        }
        return true;
      }
    }
    if (failure.Number() == error::kNotFound && lookUp == LookUp::Shown) {
      lookUp = LookUp::Navigate;
      continue;
    }
    // As with the gauge's Cancel: no message, and the entries that came stay.
    if (failure.Number() == error::kCancelled) {
      return false;
    }
    if (failure.Number() != error::kDeviceNotReady) {
      throw failure;
    }
    // The drive may have failed half-way.
    receiver.Discard();
    if (!AsksForDiskAgain(name, failure.Description())) {
      return false;
    }
  }
}

void ContentsReader::Respell(FolderNode& node, const QStringList& found) {
  if (location_.Node() == &node && found.join(kAddressSeparator) != location_.Address()) {
    // The operations on the entries take exact names.
    builder_.RespellNodes(node, found);
    location_.UpdateAddress();
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
