#include "dialogs/Prompts.h"

#include "dialogs/frmMsgBoxEx.h"
#include "dialogs/frmProperty.h"
#include "dialogs/frmSetting.h"
#include "resources/Resources.h"
#include "views/addresses/ShownText.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStyle>
#include <QWindow>

#include <optional>
#include <utility>
#include <vector>

namespace trevane {

using namespace Qt::StringLiterals;

namespace {

struct Button {
  QMessageBox::StandardButton standard;
  PromptAnswer answer;
  QString text;
};

/// The first is the default, the last is what Esc presses.
std::vector<Button> ButtonsOf(PromptButtons buttons) {
  const Button ok{QMessageBox::Ok, PromptAnswer::Ok, u"OK"_s};
  const Button cancel{QMessageBox::Cancel, PromptAnswer::Cancel, u"Cancel"_s};
  switch (buttons) {
    case PromptButtons::OkCancel:
      return {ok, cancel};
    case PromptButtons::RetryCancel:
      return {{QMessageBox::Retry, PromptAnswer::Retry, u"&Retry"_s}, cancel};
    case PromptButtons::YesNo:
      return {{QMessageBox::Yes, PromptAnswer::Yes, u"&Yes"_s},
              {QMessageBox::No, PromptAnswer::No, u"&No"_s}};
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

QString ThemeName(PromptIcon icon) {
  switch (icon) {
    case PromptIcon::Critical:
      return u"dialog-error"_s;
    case PromptIcon::Question:
      return u"dialog-question"_s;
    case PromptIcon::Exclamation:
      return u"dialog-warning"_s;
    case PromptIcon::Information:
      return u"dialog-information"_s;
    case PromptIcon::None:
      break;
  }
  return {};
}

QString IconKey(PromptIcon icon) {
  switch (icon) {
    case PromptIcon::Critical:
      return u"Critical"_s;
    case PromptIcon::Question:
      return u"Question"_s;
    case PromptIcon::Exclamation:
      return u"Exclamation"_s;
    case PromptIcon::Information:
      return u"Information"_s;
    case PromptIcon::None:
      break;
  }
  return {};
}

/// Where the desktop brings neither a style nor icons, the box shows the same picture as our own one does.
void DressUp(QMessageBox& box, PromptIcon icon) {
  if (icon == PromptIcon::None || box.style()->objectName() != "fusion"_L1 ||
      QIcon::hasThemeIcon(ThemeName(icon))) {
    return;
  }
  // Not setIconPixmap(): the box would forget what kind of message it shows.
  if (auto* picture = box.findChild<QLabel*>(u"qt_msgboxex_icon_label"_s)) {
    constexpr int kSize = 32;
    picture->setPixmap(Icon(u"msg-"_s + IconKey(icon)).pixmap(QSize(kSize, kSize), box.devicePixelRatioF()));
  }
}

/// Keeps the gauge usable beside a modal box: what stands above such a box is not blocked by it.
class GaugeAbove {
 public:
  GaugeAbove(frmGage& gauge, QMessageBox& box) : gauge_(&gauge) {
    static_cast<void>(box.winId());
    before_ = gauge.windowHandle()->transientParent();
    gauge.windowHandle()->setTransientParent(box.windowHandle());
    QObject::connect(&gauge, &frmGage::Cancelled, &box, &QDialog::reject);
  }
  /// Before the box goes, which would take the windows above it along.
  ~GaugeAbove() {
    if (gauge_ != nullptr && gauge_->windowHandle() != nullptr) {
      gauge_->windowHandle()->setTransientParent(before_);
    }
  }
  GaugeAbove(const GaugeAbove&) = delete;
  GaugeAbove& operator=(const GaugeAbove&) = delete;

 private:
  QPointer<frmGage> gauge_;
  QPointer<QWindow> before_;
};

}  // namespace

Prompts::Prompts(std::function<void(qint32)> messageBeep, std::function<void(qint32)> sleep)
    : messageBeep_(std::move(messageBeep)), gauge_(std::move(sleep)) {}

Prompts::~Prompts() {
  UnloadWindows();
}

void Prompts::SetMainWindow(QWidget* window) {
  main_ = window;
  gauge_.SetParentWindow(window);
}

QWidget* Prompts::ParentOfQuestion() const {
  // A question out of a dialog stands above the dialog; above a window that is not shown yet nothing can
  // stand.
  if (QWidget* dialog = QApplication::activeModalWidget()) {
    return dialog;
  }
  return main_ != nullptr && main_->isVisible() ? main_.data() : nullptr;
}

PromptAnswer Prompts::ShowMessage(const Message& message) {
  // On the heap and watched: the parent, gone while the question stands, takes the box with it.
  const QPointer<QMessageBox> box = new QMessageBox(ParentOfQuestion());
  box->setObjectName(u"msgBox"_s);
  box->setWindowModality(box->parentWidget() != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
  box->setWindowTitle(message.title.isEmpty() ? QGuiApplication::applicationDisplayName() : message.title);
  box->setTextFormat(Qt::PlainText);
  box->setText(WithReadableNames(message.text));
  if (!message.informativeText.isEmpty()) {
    box->setInformativeText(WithReadableNames(message.informativeText));
    // The box's text format is that of the first text only, and a file's name may look like markup.
    if (auto* const informative = box->findChild<QLabel*>(u"qt_msgbox_informativelabel"_s)) {
      informative->setTextFormat(Qt::PlainText);
    }
  }
  box->setIcon(SystemIcon(message.icon));
  DressUp(*box, message.icon);

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

  std::optional<GaugeAbove> above;
  if (frmGage* const gauge = gauge_.Window();
      message.endsWithGauge && gauge != nullptr && gauge->isVisible()) {
    above.emplace(*gauge, *box);
  }
  const int pressed = box->exec();
  above.reset();
  delete box;
  for (const Button& button : offered) {
    if (button.standard == pressed) {
      return button.answer;
    }
  }
  return offered.back().answer;
}

QString Prompts::ChooseFile(const FileQuestion& question) {
  QFileDialog dialog(ParentOfQuestion(), question.title, question.initialFolder);
  const bool save = question.mode == FileQuestion::Mode::Save;
  dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
  // "Name (*.x)|*.x" becomes what the dialog shows of the name, with the pattern once.
  QStringList filters;
  const QStringList parts = question.filter.split(u'|');
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2)
    // "*.*" means every file, also where a name needs no dot.
    filters += parts[i].section(u'(', 0, 0).trimmed() + u" ("_s +
               (parts[i + 1] == u"*.*" ? u"*"_s : parts[i + 1]) + u')';
  dialog.setNameFilters(filters);
  if (!question.fileName.isEmpty())
    dialog.selectFile(question.fileName);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
    return {};
  return QFileInfo(dialog.selectedFiles().front()).absoluteFilePath();
}

int Prompts::Choose(const ChoiceQuestion& question) {
  const QPointer<frmMsgBoxEx> box = new frmMsgBoxEx(messageBeep_, ParentOfQuestion());
  box->setWindowModality(box->parentWidget() != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
  box->SetPrompt(question.prompt);
  box->SetTitle(question.title);
  box->SetMsgIcon(IconKey(question.icon));
  box->SetButtons(question.captions);
  box->SetDefault(qint16(question.defaultButton));
  box->SetCANCEL(qint16(question.cancelButton));
  const int answer = box->ShowBox();
  delete box;
  return answer;
}

void Prompts::ShowProperties(const PropertyTable& table) {
  if (properties_ == nullptr) {
    properties_ = new frmProperty(main_);
    properties_->setAttribute(Qt::WA_DeleteOnClose);
  }
  properties_->SetTable(table);
  properties_->show();
  properties_->raise();
  properties_->activateWindow();
}

void Prompts::ShowSettings() {
  if (settings_ != nullptr) {
    return;
  }
  settings_ = new frmSetting(ParentOfQuestion());
  settings_->setWindowModality(settings_->parentWidget() != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
  settings_->exec();
  delete settings_;
}

void Prompts::UnloadWindows() {
  // The one that is shown modally goes when its ShowSettings returns.
  if (settings_ != nullptr) {
    settings_->reject();
  }
  delete properties_;
}

}  // namespace trevane
