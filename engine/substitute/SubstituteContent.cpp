#include "engine/substitute/SubstituteContent.h"

#include "engine/substitute/SubstituteFile.h"

namespace trevane {

void SubstituteSink::Write(const QByteArray& piece) {
  try {
    sink_->Write(piece);
  } catch (...) {
    file_->ContentFailed();
    throw;
  }
  print_.Add(piece);
}

SeenItem SubstituteSink::Commit() {
  return file_->Commit(*sink_, print_);
}

}  // namespace trevane
