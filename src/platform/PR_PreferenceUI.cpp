// The preferences sheet and its pages.

#include "platform/PR_PreferenceUI.h"

#include "core/UT_MessageHandler.h"
#include "platform/GUT_Commands.h"
#include "platform/GUT_StringTable.h"
#include "platform/PR_AcceleratorPrefUI.h"
#include "platform/PR_AnimationSettingsUI.h"
#include "platform/PR_DefaultColorUI.h"
#include "platform/PR_HotKeyCtrl.h"
#include "platform/PR_OnionSkinPrefUI.h"
#include "platform/PR_RendererUI.h"
#include "platform/PR_SceneUI.h"
#include "platform/PR_TemplatePrefUI.h"
#include "platform/detail/GUT_Qt.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr const char* kColourProperty = "bgr";

void ShowColour(QPushButton* button, uint32_t bgr) {
    button->setProperty(kColourProperty, bgr);
    QPixmap swatch(40, 14);
    swatch.fill(gut::ColourFromBgr(bgr));
    QPainter(&swatch).drawRect(0, 0, 39, 13);
    button->setIcon(QIcon(swatch));
    button->setIconSize(swatch.size());
}

} // namespace

// ---- the page base

PR_PreferencePage::PR_PreferencePage(PR_Preferences& preferences, const char* title)
    : preferences_(preferences), title_(gut::Tr(title)) {
    form_ = new QFormLayout(this);
}

QWidget* PR_PreferencePage::AddField(PR_Preferences::Key key, const char* label, FieldKind kind) {
    QWidget* widget = nullptr;
    switch (kind) {
    case FieldKind::kNumber:
    case FieldKind::kText:
        widget = new QLineEdit(this);
        form_->addRow(gut::Tr(label), widget);
        break;
    case FieldKind::kFolder: {
        auto* edit = new QLineEdit(this);
        auto* browse = new QPushButton(gut::Tr("Browse"), this);
        connect(browse, &QPushButton::clicked, this, [this, edit, label] {
            const QString folder = QFileDialog::getExistingDirectory(this, gut::Tr(label), edit->text());
            if (!folder.isEmpty())
                edit->setText(folder);
        });
        auto* row = new QHBoxLayout;
        row->addWidget(edit);
        row->addWidget(browse);
        form_->addRow(gut::Tr(label), row);
        widget = edit;
        break;
    }
    case FieldKind::kFlag:
        widget = new QCheckBox(gut::Tr(label), this);
        form_->addRow(widget);
        break;
    case FieldKind::kColour: {
        auto* button = new QPushButton(this);
        connect(button, &QPushButton::clicked, this, [this, button, label] {
            const QColor chosen = QColorDialog::getColor(
                gut::ColourFromBgr(button->property(kColourProperty).toUInt()), this, gut::Tr(label));
            if (chosen.isValid())
                ShowColour(button, gut::BgrFromColour(chosen));
        });
        form_->addRow(gut::Tr(label), button);
        widget = button;
        break;
    }
    case FieldKind::kChoice:
        break;
    }
    widget->setObjectName(QString::fromLatin1(PR_Preferences::Info(key).name));
    bindings_.push_back({key, kind, widget});
    return widget;
}

QWidget* PR_PreferencePage::AddChoice(PR_Preferences::Key key, const char* label,
                                      const std::vector<const char*>& names, int64_t firstValue) {
    auto* box = new QComboBox(this);
    for (size_t i = 0; i < names.size(); ++i)
        box->addItem(gut::Tr(names[i]), QVariant::fromValue<qlonglong>(firstValue + static_cast<int64_t>(i)));
    box->setObjectName(QString::fromLatin1(PR_Preferences::Info(key).name));
    form_->addRow(gut::Tr(label), box);
    bindings_.push_back({key, FieldKind::kChoice, box, firstValue});
    return box;
}

QWidget* PR_PreferencePage::Field(PR_Preferences::Key key) const {
    for (const Binding& binding : bindings_)
        if (binding.key == key)
            return binding.widget;
    return nullptr;
}

std::string PR_PreferencePage::ValueText(const Binding& binding) const {
    switch (binding.kind) {
    case FieldKind::kNumber:
        return static_cast<QLineEdit*>(binding.widget)->text().trimmed().toStdString();
    case FieldKind::kText:
    case FieldKind::kFolder:
        return static_cast<QLineEdit*>(binding.widget)->text().toStdString();
    case FieldKind::kFlag:
        return static_cast<QCheckBox*>(binding.widget)->isChecked() ? "1" : "0";
    case FieldKind::kColour:
        return std::to_string(binding.widget->property(kColourProperty).toUInt());
    case FieldKind::kChoice:
        return std::to_string(static_cast<QComboBox*>(binding.widget)->currentData().toLongLong());
    }
    return {};
}

void PR_PreferencePage::Show(const Binding& binding) {
    const PR_Preferences::Key key = binding.key;
    switch (binding.kind) {
    case FieldKind::kNumber:
    case FieldKind::kText:
    case FieldKind::kFolder:
        static_cast<QLineEdit*>(binding.widget)->setText(gut::ToQt(preferences_.Text(key)));
        break;
    case FieldKind::kFlag:
        static_cast<QCheckBox*>(binding.widget)->setChecked(preferences_.Flag(key));
        break;
    case FieldKind::kColour:
        ShowColour(static_cast<QPushButton*>(binding.widget),
                   static_cast<uint32_t>(preferences_.Number(key)));
        break;
    case FieldKind::kChoice: {
        auto* box = static_cast<QComboBox*>(binding.widget);
        box->setCurrentIndex(
            std::max(0, box->findData(QVariant::fromValue<qlonglong>(preferences_.Number(key)))));
        break;
    }
    }
}

void PR_PreferencePage::Load() {
    for (const Binding& binding : bindings_)
        Show(binding);
}

bool PR_PreferencePage::Check(UT_WString& message, QWidget*& field) const {
    for (const Binding& binding : bindings_) {
        message = preferences_.Validate(binding.key, ValueText(binding));
        if (!message.empty()) {
            field = binding.widget;
            return true;
        }
    }
    return false;
}

void PR_PreferencePage::Store() {
    const bool changed = Changed();
    for (const Binding& binding : bindings_)
        preferences_.SetFromText(binding.key, ValueText(binding));
    // The notice a page gives after a change, which the user may silence.
    if (changed && page_ == PR_Preferences::Page::kAnimation && UT_MessageHandler::Current())
        UT_MessageHandler::Current()->MessageOnceById(UT_MessageHandler::kInformation, kStrAppliesToNewSets,
                                                      nullptr);
}

bool PR_PreferencePage::Changed() const {
    for (const Binding& binding : bindings_) {
        const std::string text = ValueText(binding);
        switch (binding.kind) {
        case FieldKind::kText:
        case FieldKind::kFolder:
            if (UT_FromUtf8(text) != preferences_.Text(binding.key))
                return true;
            break;
        case FieldKind::kFlag:
            if ((text == "1") != preferences_.Flag(binding.key))
                return true;
            break;
        default:
            if (UT_SettingsStore::ParseInt(text) != preferences_.Number(binding.key))
                return true;
            break;
        }
    }
    return false;
}

// ---- the pages of the sections

namespace {

using Key = PR_Preferences::Key;

// How the pages show a key: its label, and its choices when it takes one of a few values.
struct FieldLayout {
    const char* label;
    std::vector<const char*> choices = {};
    int64_t firstChoice = 0;
};

FieldLayout LayoutOf(Key key) {
    switch (key) {
    case PR_Preferences::kFrameRate:
        return {"Frame rate (frames per second)"};
    case PR_Preferences::kCameraWidth:
        return {"Camera width (pixels)"};
    case PR_Preferences::kCameraHeight:
        return {"Camera height (pixels)"};
    case PR_Preferences::kDirect3D:
        return {"Use Direct3D"};
    case PR_Preferences::kDirect3DSoftware:
        return {"Direct3D software device"};
    case PR_Preferences::kDirect3DNoCopyBuffer:
        return {"Direct3D without copy buffer"};
    case PR_Preferences::kSmoothPegs:
        return {"Smooth pegs"};
    case PR_Preferences::kSmoothTools:
        return {"Smooth tools"};
    case PR_Preferences::kSmoothTextures:
        return {"Smooth textures"};
    case PR_Preferences::kTextureReductionSize:
        return {"Texture reduction size (pixels)"};
    case PR_Preferences::kConservativeTextureManagement:
        return {"Conservative texture management"};
    case PR_Preferences::kPolygonCacheMemory:
        return {"Polygon cache memory (megabytes)"};
    case PR_Preferences::kTension:
        return {"Tension of new path keys", {"-1", "0", "1"}, -1};
    case PR_Preferences::kContinuity:
        return {"Continuity of new path keys", {"-1", "0", "1"}, -1};
    case PR_Preferences::kBias:
        return {"Bias of new path keys", {"-1", "0", "1"}, -1};
    case PR_Preferences::kAngleUnit:
        return {"Angles", {"Degrees", "Radians"}};
    case PR_Preferences::kCoordinateUnit:
        return {"Coordinates", {"Centimeters", "Inches", "Model units", "Fields"}};
    case PR_Preferences::kShowUnits:
        return {"Show units"};
    case PR_Preferences::kPegColor:
        return {"Peg"};
    case PR_Preferences::kEffectColor:
        return {"Effect"};
    case PR_Preferences::kParamGroupColor:
        return {"Parameter group"};
    case PR_Preferences::kCameraColor:
        return {"Camera"};
    case PR_Preferences::kSoundColor:
        return {"Sound"};
    case PR_Preferences::kDrawingColor:
        return {"Drawing"};
    case PR_Preferences::kImageColor:
        return {"Image"};
    case PR_Preferences::kMediaColor:
        return {"Media"};
    case PR_Preferences::kTimelineBGColor:
        return {"Timeline background"};
    case PR_Preferences::kDrawingViewBGColor:
        return {"Drawing view background"};
    case PR_Preferences::kUseSceneBGColor:
        return {"Use the scene's background in the drawing view"};
    case PR_Preferences::kUseSceneBGColorInSV:
        return {"Use the scene's background in the scene view"};
    case PR_Preferences::kTimeMeasurementUnit:
        return {"Time measurement unit"};
    case PR_Preferences::kColorBefore:
        return {"Drawings before"};
    case PR_Preferences::kColorAfter:
        return {"Drawings after"};
    case PR_Preferences::kEnableOSShade:
        return {"Shade the onion skin"};
    case PR_Preferences::kEnableSLTShade:
        return {"Shade the static light table"};
    case PR_Preferences::kEnableALTShade:
        return {"Shade the automatic light table"};
    case PR_Preferences::kTemplateName:
        return {"Author"};
    case PR_Preferences::kTemplateCopyright:
        return {"Copyright"};
    case PR_Preferences::kGlobalTemplatePath:
        return {"Global library folder"};
    case PR_Preferences::kExportDir:
        return {"Export folder"};
    case PR_Preferences::kProjectDir:
        return {"Project folder"};
    default:
        return {PR_Preferences::Info(key).name};
    }
}

} // namespace

PR_PreferencePage::PR_PreferencePage(PR_Preferences& preferences, PR_Preferences::Page page,
                                     const char* title)
    : PR_PreferencePage(preferences, title) {
    page_ = page;
    for (const Key key : PR_Preferences::KeysOfPage(page)) {
        const FieldLayout layout = LayoutOf(key);
        if (!layout.choices.empty()) {
            AddChoice(key, layout.label, layout.choices, layout.firstChoice);
            continue;
        }
        FieldKind kind = FieldKind::kNumber;
        switch (PR_Preferences::Info(key).kind) {
        case PR_Preferences::Kind::kFlagIsOne:
        case PR_Preferences::Kind::kFlagNonZero:
            kind = FieldKind::kFlag;
            break;
        case PR_Preferences::Kind::kColour:
            kind = FieldKind::kColour;
            break;
        case PR_Preferences::Kind::kText:
            kind = key == PR_Preferences::kGlobalTemplatePath || key == PR_Preferences::kExportDir ||
                           key == PR_Preferences::kProjectDir
                       ? FieldKind::kFolder
                       : FieldKind::kText;
            break;
        default:
            break;
        }
        AddField(key, layout.label, kind);
    }
}

PR_AnimationSettingsUI::PR_AnimationSettingsUI(PR_Preferences& preferences)
    : PR_PreferencePage(preferences, PR_Preferences::Page::kAnimation, "Animation") {}

PR_RendererUI::PR_RendererUI(PR_Preferences& preferences)
    : PR_PreferencePage(preferences, PR_Preferences::Page::kRenderer, "Renderer") {}

PR_SceneUI::PR_SceneUI(PR_Preferences& preferences)
    : PR_PreferencePage(preferences, PR_Preferences::Page::kScene, "Scene") {}

PR_OnionSkinPrefUI::PR_OnionSkinPrefUI(PR_Preferences& preferences)
    : PR_PreferencePage(preferences, PR_Preferences::Page::kOnionSkin, "Onion Skin") {}

PR_DefaultColorUI::PR_DefaultColorUI(PR_Preferences& preferences)
    : PR_PreferencePage(preferences, PR_Preferences::Page::kDefaultColors, "Colors") {}

PR_TemplatePrefUI::PR_TemplatePrefUI(PR_Preferences& preferences)
    : PR_PreferencePage(preferences, PR_Preferences::Page::kTemplate, "Templates") {}

// ---- shortcuts

PR_HotKeyCtrl::PR_HotKeyCtrl(QWidget* parent) : QKeySequenceEdit(parent) {
    // One key is a shortcut: the edit ends with the first.
    connect(this, &QKeySequenceEdit::keySequenceChanged, this, [this](const QKeySequence& sequence) {
        if (sequence.count() > 1)
            setKeySequence(QKeySequence(sequence[0]));
        if (!sequence.isEmpty())
            clearFocus();
    });
}

std::string PR_HotKeyCtrl::Key() const {
    const QKeySequence sequence = keySequence();
    if (sequence.isEmpty())
        return {};
    return QKeySequence(sequence[0]).toString(QKeySequence::PortableText).toStdString();
}

void PR_HotKeyCtrl::SetKey(const std::string& key) {
    setKeySequence(QKeySequence::fromString(QString::fromStdString(key), QKeySequence::PortableText));
}

namespace {

enum Column { kGroupColumn, kCommandColumn, kKeyColumn };

QString NativeKey(const std::string& key) {
    return QKeySequence::fromString(QString::fromStdString(key), QKeySequence::PortableText)
        .toString(QKeySequence::NativeText);
}

QString PlainText(const char* menuText) {
    return gut::Tr(menuText).remove(QLatin1Char('&'));
}

} // namespace

PR_AcceleratorPrefUI::PR_AcceleratorPrefUI(PR_Preferences& preferences, GUT_AcceleratorTable& table)
    : PR_PreferencePage(preferences, "Shortcuts"), table_(table), edited_(table) {
    auto* form = static_cast<QFormLayout*>(layout());
    modeBox_ = new QComboBox(this);
    modeBox_->addItem(gut::Tr("Drawing"));
    modeBox_->addItem(gut::Tr("Sceneplanning"));
    connect(modeBox_, &QComboBox::currentIndexChanged, this, [this](int index) {
        SetMode(index == 1 ? GUT_AcceleratorTable::kSceneplanning : GUT_AcceleratorTable::kDrawing);
    });
    form->addRow(gut::Tr("Mode"), modeBox_);

    list_ = new QTreeWidget(this);
    list_->setRootIsDecorated(false);
    list_->setHeaderLabels({gut::Tr("Menu"), gut::Tr("Command"), gut::Tr("Shortcut")});
    list_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    form->addRow(list_);

    keyField_ = new PR_HotKeyCtrl(this);
    auto* assign = new QPushButton(gut::Tr("Assign"), this);
    auto* remove = new QPushButton(gut::Tr("Remove"), this);
    auto* reset = new QPushButton(gut::Tr("Reset All"), this);
    connect(assign, &QPushButton::clicked, this, [this] { AssignKey(keyField_->Key()); });
    connect(remove, &QPushButton::clicked, this, [this] { RemoveKey(); });
    connect(reset, &QPushButton::clicked, this, [this] { ResetAll(); });
    connect(list_, &QTreeWidget::currentItemChanged, this,
            [this] { keyField_->SetKey(edited_.Key(mode_, SelectedCommand())); });
    auto* row = new QHBoxLayout;
    row->addWidget(keyField_, 1);
    row->addWidget(assign);
    row->addWidget(remove);
    row->addWidget(reset);
    form->addRow(gut::Tr("Key"), row);
}

void PR_AcceleratorPrefUI::Fill() {
    const uint32_t selected = SelectedCommand();
    list_->clear();
    for (const GUT_CommandInfo& command : GUT_AllCommands()) {
        auto* item = new QTreeWidgetItem(list_, {gut::Tr(command.group), PlainText(command.text),
                                                 NativeKey(edited_.Key(mode_, command.id))});
        item->setData(kGroupColumn, Qt::UserRole, command.id);
    }
    // Shortcuts stored for commands this program does not have.
    for (const uint32_t id : edited_.UnknownCommands(mode_)) {
        auto* item = new QTreeWidgetItem(
            list_, {gut::Tr("Other"), gut::Tr("Unknown command"), NativeKey(edited_.UnknownKey(mode_, id))});
        item->setData(kGroupColumn, Qt::UserRole, id);
    }
    if (selected)
        SelectCommand(selected);
}

uint32_t PR_AcceleratorPrefUI::SelectedCommand() const {
    const QTreeWidgetItem* item = list_->currentItem();
    return item ? item->data(kGroupColumn, Qt::UserRole).toUInt() : 0;
}

void PR_AcceleratorPrefUI::Load() {
    edited_ = table_;
    Fill();
}

bool PR_AcceleratorPrefUI::Check(UT_WString&, QWidget*&) const {
    return false;
}

void PR_AcceleratorPrefUI::Store() {
    table_ = edited_;
}

bool PR_AcceleratorPrefUI::Changed() const {
    for (const auto mode : {GUT_AcceleratorTable::kDrawing, GUT_AcceleratorTable::kSceneplanning}) {
        if (edited_.UnknownCommands(mode) != table_.UnknownCommands(mode))
            return true;
        for (const GUT_CommandInfo& command : GUT_AllCommands())
            if (edited_.Key(mode, command.id) != table_.Key(mode, command.id))
                return true;
    }
    return false;
}

void PR_AcceleratorPrefUI::SetMode(GUT_AcceleratorTable::Mode mode) {
    mode_ = mode;
    if (modeBox_->currentIndex() != mode)
        modeBox_->setCurrentIndex(mode);
    Fill();
}

bool PR_AcceleratorPrefUI::SelectCommand(uint32_t id) {
    for (int i = 0; i < list_->topLevelItemCount(); ++i) {
        if (list_->topLevelItem(i)->data(kGroupColumn, Qt::UserRole).toUInt() == id) {
            list_->setCurrentItem(list_->topLevelItem(i));
            return true;
        }
    }
    return false;
}

bool PR_AcceleratorPrefUI::AssignKey(const std::string& key) {
    const uint32_t id = SelectedCommand();
    if (!id || !GUT_FindCommand(id))
        return false;
    const std::string normal = GUT_AcceleratorTable::Normalise(key);
    if (normal.empty() || GUT_AcceleratorTable::IsReserved(normal)) {
        UT_MessageHandler::Post(UT_MessageHandler::kWarning, u"Cant map to this key");
        return false;
    }
    edited_.Assign(mode_, id, normal);
    Fill();
    return true;
}

void PR_AcceleratorPrefUI::RemoveKey() {
    const uint32_t id = SelectedCommand();
    if (!id)
        return;
    if (GUT_FindCommand(id))
        edited_.Assign(mode_, id, {});
    else
        edited_.ForgetUnknown(mode_, id);
    Fill();
}

void PR_AcceleratorPrefUI::ResetAll() {
    if (UT_MessageHandler::Ask(UT_MessageHandler::kYesNo, u"Reset all shortcuts to their default value?",
                               UT_MessageHandler::kNo) != UT_MessageHandler::kYes)
        return;
    edited_.ResetAll();
    Fill();
}

// ---- the sheet

PR_PreferenceUI::PR_PreferenceUI(QWidget* parent, PR_Preferences& preferences,
                                 GUT_AcceleratorTable& accelerators)
    : QDialog(parent), preferences_(preferences), accelerators_(accelerators) {
    setObjectName(QStringLiteral("PreferenceUI"));
    setWindowTitle(gut::Tr("Preferences"));
    tabs_ = new QTabWidget(this);
    pages_ = {new PR_AnimationSettingsUI(preferences),
              new PR_RendererUI(preferences),
              new PR_SceneUI(preferences),
              new PR_OnionSkinPrefUI(preferences),
              new PR_DefaultColorUI(preferences),
              new PR_TemplatePrefUI(preferences),
              new PR_AcceleratorPrefUI(preferences, accelerators)};
    for (PR_PreferencePage* page : pages_) {
        page->Load();
        tabs_->addTab(page, page->Title());
    }

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton* messages = buttons->addButton(gut::Tr("Show All Messages"), QDialogButtonBox::ResetRole);
    messages->setToolTip(
        gut::Tr("Show again the messages that were silenced with \"Don't show this message again\""));
    connect(messages, &QPushButton::clicked, this, [this] { preferences_.ClearSilencedMessages(); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs_);
    layout->addWidget(buttons);
}

void PR_PreferenceUI::accept() {
    for (PR_PreferencePage* page : pages_) {
        UT_WString message;
        QWidget* field = nullptr;
        if (page->Check(message, field)) {
            tabs_->setCurrentWidget(page);
            UT_MessageHandler::Post(UT_MessageHandler::kWarning, message);
            field->setFocus();
            if (auto* edit = qobject_cast<QLineEdit*>(field))
                edit->selectAll();
            return;
        }
    }
    for (PR_PreferencePage* page : pages_)
        page->Store();
    // A store that cannot be written keeps the values for this session.
    preferences_.Save();
    accelerators_.Save(preferences_.Store());
    QDialog::accept();
}
