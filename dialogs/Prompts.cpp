#include "dialogs/Prompts.h"

#include "base/ShownText.h"
#include "dialogs/BesideGauge.h"
#include "dialogs/frmMsgBoxEx.h"
#include "dialogs/frmProperty.h"
#include "dialogs/frmSecret.h"
#include "dialogs/frmSetting.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QMetaObject>
#include <QPushButton>
#include <QWindow>

#include <algorithm>
#include <utility>
#include <vector>

namespace trevane {

namespace {

/// Hands the focus on to the question when a click gives it to a window that the question blocks: keys would
/// reach neither of them there.
class FocusStaysInFront final : public QObject {
 public:
  explicit FocusStaysInFront(QDialog& question) : question_(&question) {
    // Not its parent alone: it blocks those beside and above the parent, too.
    qApp->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::WindowActivate && IsBlocked(*watched)) {
      // Later: the window is just handling the event, and others have to receive it first.
      QMetaObject::invokeMethod(
          this,
          [this] {
            const QWidget* const active = QApplication::activeWindow();
            if (question_ != nullptr && QApplication::activeModalWidget() == question_ &&
                (active == nullptr || IsBlocked(*active))) {
              question_->activateWindow();
            }
          },
          Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
  }

 private:
  /// As Qt blocks windows: none that stands above the question, such as the gauge beside it.
  [[nodiscard]] bool IsBlocked(const QObject& watched) const {
    const auto* const widget = qobject_cast<const QWidget*>(&watched);
    const QWindow* const window = widget != nullptr && widget->isWindow() ? widget->windowHandle() : nullptr;
    const QWindow* const question = question_ != nullptr ? question_->windowHandle() : nullptr;
    if (window == nullptr || question == nullptr) {
      return false;
    }
    const QWindow* top = window;
    for (const QWindow* each = window; each != nullptr; each = each->transientParent()) {
      if (each == question) {
        return false;
      }
      top = each;
    }
    return question_->windowModality() == Qt::ApplicationModal || top == question ||
           top->isAncestorOf(question, QWindow::IncludeTransients);
  }

  const QPointer<QDialog> question_;
};

struct Button {
  QMessageBox::StandardButton standard;
  PromptAnswer answer;
  QString text;
};

/// The first is the default, the last is what Esc presses.
std::vector<Button> ButtonsOf(PromptButtons buttons) {
  const Button ok{QMessageBox::Ok, PromptAnswer::Ok, QStringLiteral("OK")};
  const Button cancel{QMessageBox::Cancel, PromptAnswer::Cancel, QStringLiteral("Cancel")};
  switch (buttons) {
    case PromptButtons::OkCancel:
      return {ok, cancel};
    case PromptButtons::RetryCancel:
      return {{QMessageBox::Retry, PromptAnswer::Retry, QStringLiteral("&Retry")}, cancel};
    case PromptButtons::YesNo:
      return {{QMessageBox::Yes, PromptAnswer::Yes, QStringLiteral("&Yes")},
              {QMessageBox::No, PromptAnswer::No, QStringLiteral("&No")}};
    case PromptButtons::Ok:
      break;
  }
  return {ok};
}

QMessageBox::Icon SystemIcon(PromptIcon icon) {
  switch (icon) {
    case PromptIcon::Critical:
      return QMessageBox::Critical;
    case PromptIcon::Question:
      return QMessageBox::Question;
    case PromptIcon::Exclamation:
      return QMessageBox::Warning;
    case PromptIcon::Information:
      return QMessageBox::Information;
    case PromptIcon::None:
      break;
  }
  return QMessageBox::NoIcon;
}

/// Logical pixels: a fingerprint with some words before it stands on one line.
constexpr int kWidestReason = 560;

int WidestLine(const QLabel& label) {
  int widest = 0;
  for (const QString& line : label.text().split(u'\n')) {
    widest = std::max(widest, label.fontMetrics().horizontalAdvance(line));
  }
  return widest;
}

QString IconKey(PromptIcon icon) {
  switch (icon) {
    case PromptIcon::Critical:
      return QStringLiteral("Critical");
    case PromptIcon::Question:
      return QStringLiteral("Question");
    case PromptIcon::Exclamation:
      return QStringLiteral("Exclamation");
    case PromptIcon::Information:
      return QStringLiteral("Information");
    case PromptIcon::None:
      break;
  }
  return {};
}

}  // namespace

Prompts::Prompts(std::function<void(qint32)> messageBeep, std::function<void(qint32)> sleep)
    : messageBeep_(std::move(messageBeep)), gauge_(std::move(sleep)) {
  // A cancelled operation needs no answer to its question.
  gauge_.SetCancelListener([this] {
    if (IsAsking()) {
      WithdrawQuestions();
    }
  });
}

Prompts::~Prompts() {
  UnloadWindows();
}

void Prompts::SetMainWindow(QWidget* window) {
  main_ = window;
  gauge_.SetParentWindow(window);
}

QWidget* Prompts::ParentOfQuestion() const {
  // A question out of a dialog is shown above the dialog; nothing can be shown above a window that is not
  // shown yet.
  if (QWidget* dialog = QApplication::activeModalWidget()) {
    return dialog;
  }
  return main_ != nullptr && main_->isVisible() ? main_.data() : nullptr;
}

PromptAnswer Prompts::DoShowMessage(const Message& message) {
  // On the heap and watched: a parent that is deleted while the question is shown deletes the box.
  const QPointer<QMessageBox> box = new QMessageBox(ParentOfQuestion());
  box->setObjectName(QStringLiteral("msgBox"));
  box->setWindowModality(box->parentWidget() != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
  box->setWindowTitle(message.title.isEmpty() ? QGuiApplication::applicationDisplayName() : message.title);
  box->setTextFormat(Qt::PlainText);
  box->setText(WithReadableNames(message.text));
  if (!message.informativeText.isEmpty()) {
    box->setInformativeText(WithReadableNames(message.informativeText));
    // The box's text format is that of the first text only, and a file's name may look like markup.
    if (auto* const informative = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))) {
      informative->setTextFormat(Qt::PlainText);
      informative->setMinimumWidth(std::min(WidestLine(*informative), kWidestReason));
    }
  }
  box->setIcon(SystemIcon(message.icon));

  const std::vector<Button> offered = ButtonsOf(message.buttons);
  for (const Button& button : offered) {
    QPushButton* const made = box->addButton(button.standard);
    made->setText(button.text);
    made->setIcon(QIcon());
    if (button.answer == message.defaultAnswer.value_or(offered.front().answer)) {
      box->setDefaultButton(made);
    }
  }
  box->setEscapeButton(offered.back().standard);

  const int pressed = [&] {
    const BesideGauge beside(*box, gauge_.Window());
    const FocusStaysInFront focus(*box);
    return box->exec();
  }();
  delete box;
  for (const Button& button : offered) {
    if (button.standard == pressed) {
      return button.answer;
    }
  }
  return offered.back().answer;
}

QString Prompts::DoChooseFile(const FileQuestion& question) {
  QFileDialog dialog(ParentOfQuestion(), question.title, question.initialFolder);
  const bool save = question.mode == FileQuestion::Mode::Save;
  dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  // "Name (*.x)|*.x" becomes what the dialog shows of the name, with the pattern once.
  QStringList filters;
  QStringList suffixes;
  const QStringList parts = question.filter.split(u'|');
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    // "*.*" means every file, also where a name needs no dot.
    filters += parts[i].section(u'(', 0, 0).trimmed() + QStringLiteral(" (") +
               (parts[i + 1] == u"*.*" ? QStringLiteral("*") : parts[i + 1]) + u')';
    suffixes += parts[i + 1].startsWith(QStringLiteral("*.")) && parts[i + 1] != u"*.*" ? parts[i + 1].mid(2)
                                                                                        : QString();
  }
  dialog.setNameFilters(filters);
  if (save) {
    // Before it asks whether a file may be replaced: that is to be the one that will be written.
    const auto follow = [&](const QString& filter) {
      dialog.setDefaultSuffix(suffixes.value(filters.indexOf(filter)));
    };
    follow(filters.value(0));
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, follow);
  }
  if (!question.fileName.isEmpty()) {
    dialog.selectFile(question.fileName);
  }
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
    return {};
  }
  return QFileInfo(dialog.selectedFiles().front()).absoluteFilePath();
}

int Prompts::DoChoose(const ChoiceQuestion& question) {
  const QPointer<frmMsgBoxEx> box = new frmMsgBoxEx(messageBeep_, ParentOfQuestion());
  box->setWindowModality(box->parentWidget() != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
  box->SetPrompt(question.prompt);
  box->SetInformativeText(question.informativeText);
  box->SetTitle(question.title);
  box->SetMsgIcon(IconKey(question.icon));
  box->SetButtons(question.captions);
  box->SetDefault(qint16(question.defaultButton));
  box->SetCANCEL(qint16(question.cancelButton));
  const int answer = [&] {
    const BesideGauge beside(*box, gauge_.Window());
    const FocusStaysInFront focus(*box);
    return box->ShowBox();
  }();
  // Gone with its window it was answered by nobody.
  if (box == nullptr) {
    return HarmlessAnswer(question);
  }
  delete box;
  return answer;
}

std::optional<SecretAnswer> Prompts::DoAskSecret(const SecretQuestion& question) {
  const QPointer<frmSecret> window = new frmSecret(question, ParentOfQuestion());
  window->setWindowModality(window->parentWidget() != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
  const std::optional<SecretAnswer> answer = [&] {
    const BesideGauge beside(*window, gauge_.Window());
    const FocusStaysInFront focus(*window);
    return window->Ask();
  }();
  delete window;
  return answer;
}

void Prompts::DoShowProperties(const PropertyTable& table) {
  if (properties_ == nullptr) {
    properties_ = new frmProperty(main_);
    properties_->setAttribute(Qt::WA_DeleteOnClose);
  }
  properties_->SetTable(table);
  properties_->show();
  properties_->raise();
  properties_->activateWindow();
}

void Prompts::DoShowSettings() {
  if (settings_ != nullptr) {
    return;
  }
  settings_ = new frmSetting(ParentOfQuestion());
  settings_->setWindowModality(settings_->parentWidget() != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
  settings_->exec();
  delete settings_;
}

void Prompts::CloseQuestions() {
  while (QWidget* const popup = QApplication::activePopupWidget()) {
    popup->close();
    if (popup == QApplication::activePopupWidget()) {
      break;
    }
  }
  // Each waits in an event loop of its own, one within the other: all are closed, and the loops end from the
  // inside out. Not close(): a window may take that for the press of one of its buttons.
  const QWidgetList windows = QApplication::topLevelWidgets();
  for (QWidget* const window : windows) {
    auto* const dialog = qobject_cast<QDialog*>(window);
    if (dialog != nullptr && dialog->isModal() && dialog->isVisible()) {
      dialog->done(QDialog::Rejected);
    }
  }
}

void Prompts::UnloadWindows() {
  // The modal settings window is deleted when its ShowSettings returns.
  if (settings_ != nullptr) {
    settings_->reject();
  }
  delete properties_;
}

}  // namespace trevane
