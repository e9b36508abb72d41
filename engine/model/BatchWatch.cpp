#include "engine/model/BatchWatch.h"

#include <utility>

namespace trevane {
namespace {

const BatchWatch*& Innermost() {
  static thread_local const BatchWatch* innermost = nullptr;
  return innermost;
}

}  // namespace

BatchWatch::BatchWatch(Receiver receive)
    : receive_(std::move(receive)), around_(std::exchange(Innermost(), this)) {}

BatchWatch::~BatchWatch() {
  Innermost() = around_;
}

BatchWatch::Receiver BatchWatch::Current() {
  const BatchWatch* const watch = Innermost();
  return watch != nullptr ? watch->receive_ : Receiver();
}

void BatchWatch::FileDone(qint64 bytes) {
  const BatchWatch* const watch = Innermost();
  if (watch != nullptr && watch->receive_) {
    watch->receive_({1, bytes});
  }
}

}  // namespace trevane
