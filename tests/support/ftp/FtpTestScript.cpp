#include "tests/support/ftp/FtpTestScript.h"

#include <algorithm>
#include <utility>

namespace trevane::test {

FtpVices FtpTestScript::Vices() const {
  const std::lock_guard lock(mutex_);
  return vices_;
}

void FtpTestScript::Change(const std::function<void(FtpVices& vices)>& change) {
  const std::lock_guard lock(mutex_);
  change(vices_);
}

FtpTestCounts FtpTestScript::Counts() const {
  const std::lock_guard lock(mutex_);
  return counts_;
}

void FtpTestScript::ClearCounts() {
  const std::lock_guard lock(mutex_);
  const int clients = counts_.clients;
  counts_ = {};
  counts_.clients = clients;
}

void FtpTestScript::Count(const std::function<void(FtpTestCounts& counts)>& count) {
  const std::lock_guard lock(mutex_);
  count(counts_);
}

void FtpTestScript::SetHook(Hook hook) {
  const std::lock_guard lock(mutex_);
  hook_ = std::move(hook);
}

void FtpTestScript::ArmCommand(int at, const FtpFault& fault, const QByteArray& name, int times) {
  const std::lock_guard lock(mutex_);
  command_ = {.at = at, .times = times, .name = name, .fault = fault};
  faults_ = 0;
}

void FtpTestScript::ArmBlock(int at, const FtpFault& fault) {
  const std::lock_guard lock(mutex_);
  block_ = {.at = at, .fault = fault};
  faults_ = 0;
}

void FtpTestScript::Disarm() {
  const std::lock_guard lock(mutex_);
  command_ = {};
  block_ = {};
}

int FtpTestScript::FaultCount() const {
  const std::lock_guard lock(mutex_);
  return faults_;
}

bool FtpTestScript::Armed::Strikes() {
  ++seen;
  return at > 0 && seen >= at && seen < at + times;
}

std::optional<FtpFault> FtpTestScript::OnCommand(const QByteArray& name, const QByteArray& argument) {
  Hook hook;
  {
    const std::lock_guard lock(mutex_);
    const QByteArray shown = name == "PASS" ? QByteArray("*") : argument;
    ++counts_.byName[name];
    counts_.lines.append(shown.isEmpty() ? name : name + ' ' + shown);
    if ((command_.name.isEmpty() || command_.name == name) && command_.Strikes()) {
      ++faults_;
      return command_.fault;
    }
    hook = hook_;
  }
  // Outside of the lock: it may change and count.
  return hook ? hook(name, argument) : std::nullopt;
}

std::optional<FtpFault> FtpTestScript::OnBlock() {
  const std::lock_guard lock(mutex_);
  ++counts_.blocks;
  if (!block_.Strikes()) {
    return {};
  }
  ++faults_;
  return block_.fault;
}

qint64 FtpTestScript::TakeRoom(qint64 bytes) {
  const std::lock_guard lock(mutex_);
  if (vices_.room < 0) {
    return bytes;
  }
  const qint64 taken = std::min(bytes, vices_.room);
  vices_.room -= taken;
  return taken;
}

}  // namespace trevane::test
