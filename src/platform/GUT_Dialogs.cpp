// The dialogs of the document: New Animation Set and Save As, Animation Properties, the
// properties of an element, and the tint of a palette's flavor.

#include "animationset/CNewAnimationDlg.h"
#include "core/PR_Preferences.h"
#include "core/UT_MessageHandler.h"
#include "platform/GUT_ElementPropertiesWnd.h"
#include "platform/GUT_NewAnimationWnd.h"
#include "platform/GUT_PropertiesWnd.h"
#include "platform/GUT_TintWnd.h"
#include "platform/detail/GUT_Qt.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
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

namespace {

QDoubleSpinBox* NumberField(QWidget* parent, double value, double low, double high, int decimals) {
    auto* field = new QDoubleSpinBox(parent);
    field->setRange(low, high);
    field->setDecimals(decimals);
    field->setValue(value);
    // What the field shows at first, rounded to its decimals.
    field->setProperty("shown", field->value());
    return field;
}

// The value of a field, or `old` when the field still shows what it showed at first.
double Edited(const QDoubleSpinBox* field, double old) {
    return field->value() == field->property("shown").toDouble() ? old : field->value();
}

} // namespace

GUT_ElementPropertiesWnd::GUT_ElementPropertiesWnd(QWidget* parent, const Values& values,
                                                   std::function<UT_WString(const UT_WString&)> checkName)
    : QDialog(parent), values_(values), checkName_(std::move(checkName)) {
    setObjectName(QStringLiteral("ElementPropertiesWnd"));
    setWindowTitle(gut::Tr("Element Properties"));
    name_ = new QLineEdit(gut::ToQt(values.name), this);
    auto* form = new QFormLayout;
    form->addRow(gut::Tr("Name"), name_);
    if (values.hasPlacement) {
        const AS_Placement& p = values.placement;
        constexpr double kRange = 1e6;
        type_ = new QComboBox(this);
        type_->addItems({gut::Tr("Normal"), gut::Tr("Foreground"), gut::Tr("Background")});
        type_->setCurrentIndex(static_cast<int>(std::min<uint32_t>(p.elementType, 2)));
        start_ = new QSpinBox(this);
        start_->setRange(0, 1 << 20);
        start_->setValue(static_cast<int>(std::min<uint32_t>(p.startFrame, 1 << 20)));
        start_->setProperty("shown", start_->value());
        auto row = [this](auto&... fields) {
            auto* line = new QHBoxLayout;
            (line->addWidget(fields), ...);
            return line;
        };
        offset_ = {NumberField(this, p.offset.x, -kRange, kRange, 3),
                   NumberField(this, p.offset.y, -kRange, kRange, 3),
                   NumberField(this, p.offset.z, -kRange, kRange, 3)};
        rotation_ = NumberField(this, p.rotation, -36000, 36000, 3);
        rotationPivot_ = {NumberField(this, p.rotationPivot.x, -kRange, kRange, 3),
                          NumberField(this, p.rotationPivot.y, -kRange, kRange, 3)};
        horizontalScale_ = NumberField(this, p.horizontalScale, -1000, 1000, 4);
        verticalScale_ = NumberField(this, p.verticalScale, -1000, 1000, 4);
        scalePivot_ = {NumberField(this, p.scalePivot.x, -kRange, kRange, 3),
                       NumberField(this, p.scalePivot.y, -kRange, kRange, 3)};
        keepProportions_ = new QCheckBox(gut::Tr("Keep proportions"), this);
        keepProportions_->setChecked(p.keepProportions);
        form->addRow(gut::Tr("Type"), type_);
        form->addRow(gut::Tr("Start frame"), start_);
        form->addRow(gut::Tr("Offset (x, y, z)"), row(offset_[0], offset_[1], offset_[2]));
        form->addRow(gut::Tr("Rotation (degrees)"), rotation_);
        form->addRow(gut::Tr("Rotation pivot (x, y)"), row(rotationPivot_[0], rotationPivot_[1]));
        form->addRow(gut::Tr("Scale (horizontal, vertical)"), row(horizontalScale_, verticalScale_));
        form->addRow(gut::Tr("Scale pivot (x, y)"), row(scalePivot_[0], scalePivot_[1]));
        form->addRow(QString(), keepProportions_);
    }
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(OkCancel(this));
    name_->selectAll();
    name_->setFocus();
}

void GUT_ElementPropertiesWnd::accept() {
    const UT_WString name = gut::FromQt(name_->text().trimmed());
    const UT_WString refusal = name == values_.name ? UT_WString() : checkName_(name);
    if (!refusal.empty()) {
        Refuse(name_, refusal);
        return;
    }
    values_.name = name;
    if (values_.hasPlacement) {
        AS_Placement& p = values_.placement;
        p.elementType = static_cast<uint32_t>(type_->currentIndex());
        if (start_->value() != start_->property("shown").toInt())
            p.startFrame = static_cast<uint32_t>(start_->value());
        auto point = [](C3DPoint& value, const auto& fields) {
            const double z = fields.size() > 2 ? Edited(fields[2], value.z) : value.z;
            value.Set(Edited(fields[0], value.x), Edited(fields[1], value.y), z);
        };
        point(p.offset, offset_);
        point(p.rotationPivot, rotationPivot_);
        point(p.scalePivot, scalePivot_);
        p.rotation = Edited(rotation_, p.rotation);
        p.horizontalScale = Edited(horizontalScale_, p.horizontalScale);
        p.verticalScale = Edited(verticalScale_, p.verticalScale);
        p.keepProportions = keepProportions_->isChecked();
    }
    QDialog::accept();
}

GUT_TintWnd::GUT_TintWnd(QWidget* parent, const UT_WString& flavor,
                         std::function<UT_WString(const UT_WString&)> checkName)
    : QDialog(parent), checkName_(std::move(checkName)) {
    setObjectName(QStringLiteral("TintWnd"));
    setWindowTitle(gut::Tr("Tint Flavor"));
    kind_ = new QComboBox(this);
    kind_->addItems({gut::Tr("Offset red, green and blue"), gut::Tr("Offset hue, saturation and value"),
                     gut::Tr("Blend with a color")});
    auto* form = new QFormLayout;
    form->addRow(gut::Tr("Tint"), kind_);
    for (size_t i = 0; i < offsets_.size(); ++i) {
        offsets_[i] = new QSpinBox(this);
        auto* label = new QLabel(this);
        offsetLabels_[i] = label;
        form->addRow(label, offsets_[i]);
    }
    alpha_ = new QSpinBox(this);
    alpha_->setRange(-255, 255);
    form->addRow(gut::Tr("Alpha"), alpha_);
    colourButton_ = new QPushButton(gut::Tr("Color..."), this);
    connect(colourButton_, &QPushButton::clicked, this, [this] {
        const QColor chosen = QColorDialog::getColor(blend_, this, gut::Tr("Blend Color"));
        if (chosen.isValid())
            SetBlendColor(chosen);
    });
    form->addRow(gut::Tr("Blend with"), colourButton_);
    amount_ = new QSpinBox(this);
    amount_->setRange(0, 100);
    amount_->setSuffix(QStringLiteral(" %"));
    form->addRow(gut::Tr("Amount"), amount_);
    intoNew_ = new QCheckBox(gut::Tr("Into a new flavor"), this);
    intoNew_->setChecked(true);
    name_ = new QLineEdit(gut::ToQt(flavor) + gut::Tr(" tinted"), this);
    connect(intoNew_, &QCheckBox::toggled, name_, &QWidget::setEnabled);
    form->addRow(intoNew_, name_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(OkCancel(this));
    connect(kind_, &QComboBox::currentIndexChanged, this, [this] { KindChanged(); });
    SetBlendColor(blend_);
    KindChanged();
}

void GUT_TintWnd::SetBlendColor(const QColor& colour) {
    blend_ = colour;
    QPixmap swatch(16, 16);
    swatch.fill(colour);
    colourButton_->setIcon(QIcon(swatch));
}

void GUT_TintWnd::KindChanged() {
    const Kind kind = static_cast<Kind>(kind_->currentIndex());
    static const char* const kRgb[] = {"Red", "Green", "Blue"};
    static const char* const kHsv[] = {"Hue (degrees)", "Saturation (%)", "Value (%)"};
    for (size_t i = 0; i < offsets_.size(); ++i) {
        const bool offset = kind != kBlend;
        offsets_[i]->setVisible(offset);
        offsetLabels_[i]->setVisible(offset);
        offsetLabels_[i]->setText(gut::Tr(kind == kOffsetHsv ? kHsv[i] : kRgb[i]));
        const int limit = kind == kOffsetHsv ? (i == 0 ? 360 : 100) : 255;
        offsets_[i]->setRange(-limit, limit);
    }
    alpha_->setEnabled(kind != kBlend);
    colourButton_->setEnabled(kind == kBlend);
    // A blend goes half way by default, an offset all the way.
    amount_->setValue(kind == kBlend ? 50 : 100);
}

CM_Tint GUT_TintWnd::Tint() const {
    const int amount = amount_->value();
    switch (static_cast<Kind>(kind_->currentIndex())) {
    case kOffsetRgb:
        return CM_Tint::OffsetRgb(offsets_[0]->value(), offsets_[1]->value(), offsets_[2]->value(),
                                  alpha_->value(), static_cast<float>(amount));
    case kOffsetHsv:
        return CM_Tint::OffsetHsv(offsets_[0]->value(), offsets_[1]->value() * 0.01,
                                  offsets_[2]->value() * 0.01, alpha_->value(), static_cast<float>(amount));
    case kBlend:
        break;
    }
    return CM_Tint::Blend({static_cast<uint8_t>(blend_.red()), static_cast<uint8_t>(blend_.green()),
                           static_cast<uint8_t>(blend_.blue()), static_cast<uint8_t>(blend_.alpha())},
                          amount);
}

void GUT_TintWnd::accept() {
    UT_WString name;
    if (intoNew_->isChecked()) {
        name = gut::FromQt(name_->text().trimmed());
        const UT_WString refusal = name.empty() ? UT_WString(u"The name cannot be empty.") : checkName_(name);
        if (!refusal.empty()) {
            Refuse(name_, refusal);
            return;
        }
    }
    newFlavor_ = name;
    QDialog::accept();
}
