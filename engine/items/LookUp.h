#pragma once

namespace trevane {

/// How the names of an address are matched where the file system is case-sensitive.
enum class LookUp {
  /// Letter by letter: whenever something may be created, replaced, renamed or deleted.
  Exact,
  /// A name that differs only in case is taken when there is no exact match and no second such name: for
  /// addresses that a person typed. What was found is to be compared with what was asked for.
  Navigate,
  /// As Navigate for a folder that the views show, which was there when they were filled: it is not looked
  /// for. What is done with it fails with error::kNotFound when it is gone or spelt otherwise by now.
  Shown
};

}  // namespace trevane
