#include "engine/remote/NestedCall.h"

#include <gtest/gtest.h>

// A part of every test program: an engine call that is made while another one is waited for is a mistake.
namespace trevane::test {
namespace {

[[maybe_unused]] const bool kIsSet = [] {
  SetNestedCallHandler(
      [](const QString& what) { ADD_FAILURE() << "engine call inside a wait: " << what.toStdString(); });
  return true;
}();

}  // namespace
}  // namespace trevane::test
