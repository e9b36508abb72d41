#include "platform/TaskbarProgress.h"

#include <algorithm>

#include <windows.h>

#include <shobjidl.h>

namespace trevane {

class TaskbarProgress::Native final {
 public:
  Native() = default;
  Native(const Native&) = delete;
  Native& operator=(const Native&) = delete;
  ~Native() {
    if (list_ != nullptr) {
      list_->Release();
    }
  }

  void SetWindow(quintptr window) { window_ = reinterpret_cast<HWND>(window); }

  void Show(ULONGLONG done, ULONGLONG whole) {
    if (ITaskbarList3* list = List()) {
      list->SetProgressValue(window_, done, whole);
      shown_ = true;
    }
  }

  void Hide() {
    if (shown_) {
      list_->SetProgressState(window_, TBPF_NOPROGRESS);
      shown_ = false;
    }
  }

 private:
  /// Null where the shell has none, which is asked once, and before the window is known.
  ITaskbarList3* List() {
    if (window_ == nullptr || asked_) {
      return window_ != nullptr ? list_ : nullptr;
    }
    asked_ = true;
    void* made = nullptr;
    // The window's thread has entered the component model for the toolkit's drag and drop.
    if (SUCCEEDED(
            CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3, &made))) {
      list_ = static_cast<ITaskbarList3*>(made);
      if (FAILED(list_->HrInit())) {
        list_->Release();
        list_ = nullptr;
      }
    }
    return list_;
  }

  HWND window_ = nullptr;
  ITaskbarList3* list_ = nullptr;
  bool asked_ = false;
  bool shown_ = false;
};

TaskbarProgress::TaskbarProgress(const QString& /*desktopFile*/) : native_(std::make_shared<Native>()) {}

TaskbarProgress::~TaskbarProgress() {
  native_->Hide();
}

void TaskbarProgress::SetWindow(quintptr window) {
  native_->SetWindow(window);
}

void TaskbarProgress::Show(qint64 done, qint64 whole) {
  const qint64 shown = std::clamp<qint64>(done, 0, whole);
  native_->Show(static_cast<ULONGLONG>(shown), static_cast<ULONGLONG>(whole));
}

void TaskbarProgress::Hide() {
  native_->Hide();
}

}  // namespace trevane
