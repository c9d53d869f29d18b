// The dialogs of the document: New Animation Set and Save As, and Animation Properties.

#include "animationset/CNewAnimationDlg.h"
#include "core/PR_Preferences.h"
#include "core/UT_MessageHandler.h"
#include "platform/GUT_NewAnimationWnd.h"
#include "platform/GUT_PropertiesWnd.h"
#include "platform/detail/GUT_Qt.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

QDialogButtonBox* OkCancel(QDialog* dialog) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}

// Shows why a field was refused and puts the user back in it.
void Refuse(QLineEdit* field, const UT_WString& message) {
    UT_MessageHandler::Post(UT_MessageHandler::kWarning, message);
    field->setFocus();
    field->selectAll();
}

} // namespace

GUT_NewAnimationWnd::GUT_NewAnimationWnd(QWidget* parent, CNewAnimationDlg& rules)
    : QDialog(parent), rules_(rules) {
    setObjectName(QStringLiteral("NewAnimationWnd"));
    setWindowTitle(gut::Tr(UT_ToUtf8(rules.title).c_str()));
    name_ = new QLineEdit(gut::ToQt(rules.name), this);
    name_->setObjectName(QStringLiteral("name"));
    location_ = new QLineEdit(gut::ToQt(rules.location), this);
    location_->setObjectName(QStringLiteral("location"));
    location_->setMinimumWidth(320);
    auto* browse = new QPushButton(gut::Tr("Browse"), this);
    connect(browse, &QPushButton::clicked, this, [this] {
        const QString folder =
            QFileDialog::getExistingDirectory(this, gut::Tr("Location"), location_->text());
        if (!folder.isEmpty())
            location_->setText(folder);
    });
    auto* locationRow = new QHBoxLayout;
    locationRow->addWidget(location_);
    locationRow->addWidget(browse);

    auto* form = new QFormLayout;
    form->addRow(gut::Tr("Name"), name_);
    form->addRow(gut::Tr("Location"), locationRow);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(OkCancel(this));
    name_->selectAll();
    name_->setFocus();
}

void GUT_NewAnimationWnd::accept() {
    rules_.name = gut::FromQt(name_->text());
    rules_.location = gut::FromQt(location_->text());
    const UT_WString refusal = rules_.Accept();
    // The rules trim the name; the field shows what they will use.
    name_->setText(gut::ToQt(rules_.name));
    if (!refusal.empty()) {
        Refuse(name_, refusal);
        return;
    }
    QDialog::accept();
}

GUT_PropertiesWnd::GUT_PropertiesWnd(QWidget* parent, const Values& values)
    : QDialog(parent), values_(values) {
    setObjectName(QStringLiteral("PropertiesWnd"));
    setWindowTitle(gut::Tr("Animation Properties"));
    frameRate_ = new QLineEdit(QString::number(values.frameRate), this);
    width_ = new QLineEdit(QString::number(values.cameraWidth), this);
    height_ = new QLineEdit(QString::number(values.cameraHeight), this);
    auto* form = new QFormLayout;
    form->addRow(gut::Tr("Frame rate (frames per second)"), frameRate_);
    form->addRow(gut::Tr("Camera width (pixels)"), width_);
    form->addRow(gut::Tr("Camera height (pixels)"), height_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(OkCancel(this));
}

void GUT_PropertiesWnd::accept() {
    // The same limits as the defaults of new sets in the preferences.
    const PR_Preferences& preferences = PR_Preferences::Instance();
    const std::pair<QLineEdit*, PR_Preferences::Key> fields[] = {
        {frameRate_, PR_Preferences::kFrameRate},
        {width_, PR_Preferences::kCameraWidth},
        {height_, PR_Preferences::kCameraHeight},
    };
    Values values;
    uint32_t* targets[] = {&values.frameRate, &values.cameraWidth, &values.cameraHeight};
    for (size_t i = 0; i < std::size(fields); ++i) {
        const std::string text = fields[i].first->text().trimmed().toStdString();
        const UT_WString refusal = preferences.Validate(fields[i].second, text);
        if (!refusal.empty()) {
            Refuse(fields[i].first, refusal);
            return;
        }
        *targets[i] = static_cast<uint32_t>(*UT_SettingsStore::ParseInt(text));
    }
    values_ = values;
    QDialog::accept();
}
