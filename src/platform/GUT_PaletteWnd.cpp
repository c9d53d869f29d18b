// The palette panel: palettes, flavours and colours of the open set.

#include "platform/GUT_PaletteWnd.h"

#include "animationset/CAnimationSetObj.h"
#include "colour/CM_AddEntryCommand.h"
#include "colour/CM_AddPaletteCommand.h"
#include "colour/CM_EditEntryCommand.h"
#include "colour/CM_MoveEntryCommand.h"
#include "colour/CM_RemoveEntryCommand.h"
#include "colour/CM_RemovePaletteCommand.h"
#include "colour/CM_RemoveStyleCommand.h"
#include "colour/CM_RenameEntryCommand.h"
#include "colour/CM_RenamePaletteCommand.h"
#include "colour/CM_RenameStyleCommand.h"
#include "colour/CM_SwitchStyleCommand.h"
#include "colour/CM_TintCommand.h"
#include "core/UT_CommandHistory.h"
#include "core/UT_Format.h"
#include "core/UT_MessageHandler.h"
#include "platform/GUT_Commands.h"
#include "platform/GUT_TintWnd.h"
#include "platform/detail/GUT_Qt.h"

#include <QAbstractListModel>
#include <QAction>
#include <QColorDialog>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLinearGradient>
#include <QListView>
#include <QPainter>
#include <QRadialGradient>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int kSwatch = 30;

QColor ToQColor(const BM_Rgba& colour) {
    return QColor(colour.r, colour.g, colour.b, colour.a);
}

// What a colour looks like in the flavour in force, over a checker for its transparency.
QPixmap SwatchPicture(const CM_BaseColorObj& entry) {
    QPixmap picture(kSwatch, kSwatch);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    for (int y = 0; y < kSwatch; y += 6)
        for (int x = (y / 6 % 2) * 6; x < kSwatch; x += 12)
            painter.fillRect(x, y, 6, 6, QColor(0xcc, 0xcc, 0xcc));
    const QRect area(0, 0, kSwatch, kSwatch);
    if (const auto* colour = dynamic_cast<const CM_Color*>(&entry)) {
        const CM_GradientStops& stops = colour->Stops();
        if (colour->GetGradientKind() == CM_Color::kSolid || stops.size() < 2) {
            painter.fillRect(area, stops.empty() ? QColor(Qt::transparent) : ToQColor(stops.front().colour));
        } else {
            QGradientStops qtStops;
            for (const CM_GradientData& stop : stops)
                qtStops.push_back({std::clamp(stop.position, 0.0, 1.0), ToQColor(stop.colour)});
            if (colour->GetGradientKind() == CM_Color::kRadial) {
                QRadialGradient gradient(QRectF(area).center(), kSwatch / 2.0);
                gradient.setStops(qtStops);
                painter.fillRect(area, gradient);
            } else {
                QLinearGradient gradient(area.topLeft(), area.topRight());
                gradient.setStops(qtStops);
                painter.fillRect(area, gradient);
            }
        }
    } else {
        painter.setPen(Qt::black);
        painter.drawText(area, Qt::AlignCenter, QStringLiteral("T"));
    }
    painter.setPen(QColor(0x80, 0x80, 0x80));
    painter.drawRect(area.adjusted(0, 0, -1, -1));
    return picture;
}

QString ColourText(const CM_BaseColorObj& entry) {
    const auto* colour = dynamic_cast<const CM_Color*>(&entry);
    if (!colour)
        return gut::Tr("texture");
    if (colour->GetGradientKind() != CM_Color::kSolid)
        return gut::Tr("gradient");
    if (colour->Stops().empty())
        return {};
    const BM_Rgba value = colour->Stops().front().colour;
    QString text = QStringLiteral("#%1%2%3")
                       .arg(value.r, 2, 16, QLatin1Char('0'))
                       .arg(value.g, 2, 16, QLatin1Char('0'))
                       .arg(value.b, 2, 16, QLatin1Char('0'))
                       .toUpper();
    if (value.a != 255)
        text += gut::Tr(", alpha %1").arg(value.a);
    return text;
}

} // namespace

// The colours of the palette shown, as swatches with their names. A rename goes to the
// panel's operation; the rows change when the notification comes back.
class GUT_PaletteWnd::SwatchModelImpl : public QAbstractListModel {
public:
    explicit SwatchModelImpl(GUT_PaletteWnd& window) : window_(window) {}

    void Reset() {
        beginResetModel();
        endResetModel();
    }

    CM_BaseColorObj* EntryAt(int row) const {
        const CM_Palette* palette = window_.CurrentPalette();
        return palette && row >= 0 ? palette->GetEntry(static_cast<size_t>(row)) : nullptr;
    }

    int rowCount(const QModelIndex& parent) const override {
        const CM_Palette* palette = window_.CurrentPalette();
        return parent.isValid() || !palette ? 0 : static_cast<int>(palette->GetEntryCount());
    }

    QVariant data(const QModelIndex& index, int role) const override {
        const CM_BaseColorObj* entry = EntryAt(index.row());
        if (!entry)
            return {};
        switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole:
            return gut::ToQt(entry->GetName());
        case Qt::DecorationRole:
            return SwatchPicture(*entry);
        case Qt::ToolTipRole:
            return gut::ToQt(entry->GetName()) + QStringLiteral(" (") + ColourText(*entry) +
                   QStringLiteral(")");
        default:
            return {};
        }
    }

    bool setData(const QModelIndex& index, const QVariant& value, int role) override {
        const CM_BaseColorObj* entry = EntryAt(index.row());
        if (!entry || role != Qt::EditRole)
            return false;
        return window_.RenameColour(entry->GetId(), gut::FromQt(value.toString().trimmed()));
    }

    Qt::ItemFlags flags(const QModelIndex& index) const override {
        if (!EntryAt(index.row()))
            return Qt::NoItemFlags;
        return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
    }

private:
    GUT_PaletteWnd& window_;
};

GUT_PaletteWnd::GUT_PaletteWnd(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("PaletteWnd"));
    palettes_ = new QComboBox(this);
    palettes_->setObjectName(QStringLiteral("palettes"));
    flavours_ = new QComboBox(this);
    flavours_->setObjectName(QStringLiteral("flavours"));
    model_ = new SwatchModelImpl(*this);
    model_->setParent(this);
    swatches_ = new QListView(this);
    swatches_->setObjectName(QStringLiteral("swatches"));
    swatches_->setModel(model_);
    swatches_->setViewMode(QListView::IconMode);
    swatches_->setMovement(QListView::Static);
    swatches_->setResizeMode(QListView::Adjust);
    swatches_->setWrapping(true);
    swatches_->setIconSize(QSize(kSwatch, kSwatch));
    swatches_->setGridSize(QSize(kSwatch + 34, kSwatch + 22));
    swatches_->setUniformItemSizes(true);
    swatches_->setWordWrap(false);
    swatches_->setTextElideMode(Qt::ElideRight);
    swatches_->setSelectionMode(QAbstractItemView::SingleSelection);
    swatches_->setEditTriggers(QAbstractItemView::EditKeyPressed);

    connect(palettes_, &QComboBox::activated, this, [this](int index) {
        const CM_PaletteList* list = List();
        if (list && index >= 0)
            ShowPalette(list->GetPalette(static_cast<size_t>(index))->GetId());
    });
    connect(flavours_, &QComboBox::activated, this, [this](int index) {
        if (index >= 0)
            SwitchFlavour(static_cast<uint32_t>(index));
    });
    connect(swatches_->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& index) {
                if (reloading_)
                    return;
                const CM_BaseColorObj* entry = model_->EntryAt(index.row());
                selected_ = entry ? entry->GetId() : UT_UniqueId();
                if (onChanged)
                    onChanged();
            });
    connect(swatches_, &QListView::doubleClicked, this, [this](const QModelIndex& index) {
        if (const CM_BaseColorObj* entry = model_->EntryAt(index.row())) {
            SelectEntry(entry->GetId());
            OnCommand(kCmdColourEdit);
        }
    });

    auto* form = new QFormLayout;
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(gut::Tr("Palette"), palettes_);
    form->addRow(gut::Tr("Flavor"), flavours_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addLayout(form);
    layout->addWidget(swatches_);
}

GUT_PaletteWnd::~GUT_PaletteWnd() {
    SetSet(nullptr);
}

void GUT_PaletteWnd::SetActions(const std::function<QAction*(uint32_t)>& actionOf) {
    auto row = [this, &actionOf](std::initializer_list<uint32_t> ids, const QStringList& texts) {
        auto* line = new QHBoxLayout;
        int i = 0;
        for (const uint32_t id : ids) {
            QAction* action = actionOf(id);
            // The buttons say it short; the menus say it in full. The button shows the
            // icon text, which the menu's updates of the text leave alone.
            action->setIconText(texts[i++]);
            auto* button = new QToolButton(this);
            button->setDefaultAction(action);
            line->addWidget(button);
        }
        line->addStretch();
        return line;
    };
    auto* layout = static_cast<QVBoxLayout*>(this->layout());
    layout->insertLayout(1, row({kCmdPaletteNew, kCmdPaletteDuplicate, kCmdPaletteRename, kCmdPaletteDelete},
                                {gut::Tr("New"), gut::Tr("Copy"), gut::Tr("Rename"), gut::Tr("Delete")}));
    layout->addLayout(row({kCmdColourNew, kCmdColourEdit, kCmdColourRename, kCmdColourDelete},
                          {gut::Tr("New"), gut::Tr("Edit"), gut::Tr("Rename"), gut::Tr("Delete")}));
}

QAbstractItemModel* GUT_PaletteWnd::SwatchModel() const {
    return model_;
}

CM_PaletteList* GUT_PaletteWnd::List() const {
    return set_ ? &set_->PaletteList() : nullptr;
}

void GUT_PaletteWnd::SetSet(CAnimationSetObj* set) {
    if (CM_PaletteList* list = List())
        list->Detach(this);
    set_ = set;
    shown_ = UT_UniqueId();
    selected_ = UT_UniqueId();
    if (CM_PaletteList* list = List())
        list->Attach(this);
    Reload();
}

CM_Palette* GUT_PaletteWnd::CurrentPalette() const {
    const CM_PaletteList* list = List();
    if (!list)
        return nullptr;
    // While the palette asked for is away (removed, or added by a command that is still
    // telling of it) the first one stands in for it.
    CM_Palette* palette = list->FindPalette(shown_);
    return palette ? palette : list->GetPalette(0);
}

CM_BaseColorObj* GUT_PaletteWnd::CurrentEntry() const {
    const CM_Palette* palette = CurrentPalette();
    const int index = palette ? palette->Find(selected_) : -1;
    return index >= 0 ? palette->GetEntry(static_cast<size_t>(index)) : nullptr;
}

void GUT_PaletteWnd::ShowPalette(UT_UniqueId id) {
    shown_ = id;
    selected_ = UT_UniqueId();
    Reload();
}

void GUT_PaletteWnd::SelectEntry(UT_UniqueId id) {
    selected_ = id;
    const CM_Palette* palette = CurrentPalette();
    const int index = palette ? palette->Find(id) : -1;
    swatches_->setCurrentIndex(index >= 0 ? model_->index(index, 0) : QModelIndex());
}

void GUT_PaletteWnd::Reload() {
    reloading_ = true;
    const CM_PaletteList* list = List();
    palettes_->clear();
    flavours_->clear();
    if (list)
        for (size_t i = 0; i < list->GetPaletteCount(); ++i)
            palettes_->addItem(gut::ToQt(list->GetPalette(i)->GetName()));
    const CM_Palette* palette = CurrentPalette();
    if (palette) {
        palettes_->setCurrentIndex(list->IndexOfPalette(palette->GetId()));
        for (const CM_PaletteStyle& style : palette->GetStyles())
            flavours_->addItem(gut::ToQt(style.name));
        flavours_->setCurrentIndex(static_cast<int>(palette->GetCurrentStyle()));
    }
    model_->Reset();
    const int index = palette ? palette->Find(selected_) : -1;
    if (index >= 0) {
        const QModelIndex current = model_->index(index, 0);
        swatches_->setCurrentIndex(current);
        swatches_->scrollTo(current);
    }
    reloading_ = false;
}

void GUT_PaletteWnd::OnPaletteListChanged(const void*, const CM_PaletteListData&) {
    Reload();
    if (onChanged)
        onChanged();
}

bool GUT_PaletteWnd::Run(UT_Command& command, const char16_t* name) {
    return set_ && set_->History().Execute(command, name);
}

bool GUT_PaletteWnd::AddPalette(const UT_WString& name) {
    CM_PaletteList* list = List();
    if (!list || name.empty())
        return false;
    const CM_Palette* current = CurrentPalette();
    const int at = current ? list->IndexOfPalette(current->GetId()) : -1;
    const size_t index = at < 0 ? list->GetPaletteCount() : static_cast<size_t>(at) + 1;
    std::unique_ptr<CM_AddPaletteCommand> command =
        CM_AddPaletteCommand::NewPalette(*list, name, u"Default", index);
    const UT_UniqueId id = command->PaletteId();
    shown_ = id;
    selected_ = UT_UniqueId();
    return Run(*command, CM_AddPaletteCommand::kName);
}

bool GUT_PaletteWnd::DuplicatePalette() {
    CM_PaletteList* list = List();
    const CM_Palette* palette = CurrentPalette();
    if (!palette)
        return false;
    std::unique_ptr<CM_AddPaletteCommand> command = CM_AddPaletteCommand::Duplicate(
        *list, palette->GetId(), UT_WString(u"Copy of ") + palette->GetName());
    if (!command)
        return false;
    shown_ = command->PaletteId();
    selected_ = UT_UniqueId();
    return Run(*command, CM_AddPaletteCommand::kDuplicateName);
}

bool GUT_PaletteWnd::RenamePalette(const UT_WString& name) {
    const CM_Palette* palette = CurrentPalette();
    if (!palette || name.empty() || name == palette->GetName())
        return false;
    CM_RenamePaletteCommand command(*List(), palette->GetId(), name);
    return Run(command, CM_RenamePaletteCommand::kName);
}

bool GUT_PaletteWnd::DeletePalette() {
    CM_PaletteList* list = List();
    const CM_Palette* palette = CurrentPalette();
    if (!palette)
        return false;
    // The palette after it, or else the one before, is shown next.
    const auto index = static_cast<size_t>(list->IndexOfPalette(palette->GetId()));
    const CM_Palette* next = list->GetPalette(index + 1)
                                 ? list->GetPalette(index + 1)
                                 : (index > 0 ? list->GetPalette(index - 1) : nullptr);
    const UT_UniqueId removed = palette->GetId();
    shown_ = next ? next->GetId() : UT_UniqueId();
    selected_ = UT_UniqueId();
    CM_RemovePaletteCommand command(*list, removed);
    if (Run(command, CM_RemovePaletteCommand::kName))
        return true;
    shown_ = removed;
    return false;
}

bool GUT_PaletteWnd::AddColour() {
    const CM_Palette* palette = CurrentPalette();
    if (!palette)
        return false;
    // "Color 121" after the 120 colours of the default palette, and so on.
    UT_WString name;
    for (size_t number = palette->GetEntryCount() + 1;; ++number) {
        name = UT_Fmt(u"Color %d", UT_Num(static_cast<int64_t>(number)));
        bool used = false;
        for (size_t i = 0; i < palette->GetEntryCount() && !used; ++i)
            used = palette->GetEntry(i)->GetName() == name;
        if (!used)
            break;
    }
    // A copy of the selected colour, ready to be edited, or white.
    BM_Rgba value{255, 255, 255, 255};
    const int at = palette->Find(selected_);
    if (const auto* colour = dynamic_cast<const CM_Color*>(CurrentEntry());
        colour && !colour->Stops().empty())
        value = colour->Stops().front().colour;
    const size_t position = at < 0 ? palette->GetEntryCount() : static_cast<size_t>(at) + 1;
    CM_AddEntryCommand command(*List(), palette->GetId(), position, CM_Color::MakeSolid(name, value));
    selected_ = command.EntryId();
    return Run(command, CM_AddEntryCommand::kName);
}

bool GUT_PaletteWnd::EditColour(const QColor& colour) {
    const CM_BaseColorObj* entry = CurrentEntry();
    if (!entry)
        return false;
    const BM_Rgba value{static_cast<uint8_t>(colour.red()), static_cast<uint8_t>(colour.green()),
                        static_cast<uint8_t>(colour.blue()), static_cast<uint8_t>(colour.alpha())};
    const auto* old = dynamic_cast<const CM_Color*>(entry);
    if (old && old->GetGradientKind() == CM_Color::kSolid && !old->Stops().empty() &&
        old->Stops().front().colour == value)
        return false;
    std::unique_ptr<CM_EditEntryCommand> command =
        CM_EditEntryCommand::SolidColor(*List(), entry->GetId(), value);
    return command && Run(*command, CM_EditEntryCommand::kName);
}

bool GUT_PaletteWnd::RenameColour(UT_UniqueId id, const UT_WString& name) {
    const CM_PaletteList* list = List();
    const CM_PaletteList::EntryPlace place = list ? list->FindEntry(id) : CM_PaletteList::EntryPlace();
    if (!place.palette || name == place.palette->GetEntry(static_cast<size_t>(place.index))->GetName())
        return false;
    if (name.empty()) {
        UT_MessageHandler::Post(UT_MessageHandler::kWarning, u"The name of the color cannot be empty.");
        return false;
    }
    CM_RenameEntryCommand command(*List(), id, name);
    return Run(command, CM_RenameEntryCommand::kName);
}

bool GUT_PaletteWnd::DeleteColour() {
    const CM_Palette* palette = CurrentPalette();
    const CM_BaseColorObj* entry = CurrentEntry();
    if (!entry)
        return false;
    const auto at = static_cast<size_t>(palette->Find(entry->GetId()));
    const UT_UniqueId id = entry->GetId();
    // The colour after it, or else the one before, is selected next.
    const CM_BaseColorObj* next = palette->GetEntry(at + 1) ? palette->GetEntry(at + 1)
                                                            : (at > 0 ? palette->GetEntry(at - 1) : nullptr);
    selected_ = next ? next->GetId() : UT_UniqueId();
    CM_RemoveEntryCommand command(*List(), id);
    return Run(command, CM_RemoveEntryCommand::kName);
}

bool GUT_PaletteWnd::MoveColour(int by) {
    const CM_Palette* palette = CurrentPalette();
    const CM_BaseColorObj* entry = CurrentEntry();
    if (!entry)
        return false;
    const int to = palette->Find(entry->GetId()) + by;
    if (to < 0 || to >= static_cast<int>(palette->GetEntryCount()))
        return false;
    CM_MoveEntryCommand command(*List(), entry->GetId(), static_cast<size_t>(to));
    return Run(command, CM_MoveEntryCommand::kName);
}

UT_WString GUT_PaletteWnd::CheckFlavourName(const UT_WString& name) const {
    const CM_Palette* palette = CurrentPalette();
    if (!palette || !palette->HasStyleNamed(name))
        return {};
    return UT_Fmt(u"Palette \"%S\" has a flavor named \"%S\" already; please choose a different name.",
                  palette->GetName(), name);
}

bool GUT_PaletteWnd::TintFlavour(const CM_Tint& tint, const UT_WString& newFlavour) {
    const CM_Palette* palette = CurrentPalette();
    if (!palette)
        return false;
    if (!newFlavour.empty()) {
        const UT_WString refusal = CheckFlavourName(newFlavour);
        if (!refusal.empty()) {
            UT_MessageHandler::Post(UT_MessageHandler::kWarning, refusal);
            return false;
        }
    }
    const uint32_t from = palette->GetCurrentStyle();
    std::unique_ptr<CM_TintCommand> command =
        CM_TintCommand::Make(*List(), palette->GetId(), tint, from,
                             newFlavour.empty() ? std::optional<uint32_t>(from) : std::nullopt, newFlavour);
    return command && Run(*command, CM_TintCommand::kName);
}

bool GUT_PaletteWnd::SwitchFlavour(uint32_t style) {
    const CM_Palette* palette = CurrentPalette();
    if (!palette || style >= palette->GetStyleCount() || style == palette->GetCurrentStyle())
        return false;
    CM_SwitchStyleCommand command(*List(), palette->GetId(), style);
    return Run(command, CM_SwitchStyleCommand::kName);
}

bool GUT_PaletteWnd::RenameFlavour(const UT_WString& name) {
    const CM_Palette* palette = CurrentPalette();
    if (!palette || name.empty())
        return false;
    const uint32_t style = palette->GetCurrentStyle();
    if (palette->GetStyles()[style].name == name)
        return false;
    if (const UT_WString refusal = CheckFlavourName(name); !refusal.empty()) {
        UT_MessageHandler::Post(UT_MessageHandler::kWarning, refusal);
        return false;
    }
    CM_RenameStyleCommand command(*List(), palette->GetId(), style, name);
    return Run(command, CM_RenameStyleCommand::kName);
}

bool GUT_PaletteWnd::DeleteFlavour() {
    const CM_Palette* palette = CurrentPalette();
    if (!palette || palette->GetStyleCount() < 2)
        return false;
    CM_RemoveStyleCommand command(*List(), palette->GetId(), palette->GetCurrentStyle());
    return Run(command, CM_RemoveStyleCommand::kName);
}

bool GUT_PaletteWnd::AskName(const char* title, const UT_WString& start, UT_WString& name) {
    bool ok = false;
    const QString text = QInputDialog::getText(this, gut::Tr(title), gut::Tr("Name:"), QLineEdit::Normal,
                                               gut::ToQt(start), &ok);
    name = gut::FromQt(text.trimmed());
    if (ok && name.empty())
        UT_MessageHandler::Post(UT_MessageHandler::kWarning, u"The name cannot be empty.");
    return ok && !name.empty();
}

bool GUT_PaletteWnd::UpdateCommand(uint32_t id, State& state) {
    const CM_Palette* palette = CurrentPalette();
    switch (id) {
    case kCmdPaletteNew:
        state.enabled = set_ != nullptr;
        return true;
    case kCmdPaletteDuplicate:
    case kCmdPaletteRename:
    case kCmdPaletteDelete:
    case kCmdColourNew:
    case kCmdFlavourRename:
        state.enabled = palette != nullptr;
        return true;
    case kCmdColourEdit:
        state.enabled = dynamic_cast<const CM_Color*>(CurrentEntry()) != nullptr;
        return true;
    case kCmdColourRename:
    case kCmdColourDelete:
        state.enabled = CurrentEntry() != nullptr;
        return true;
    case kCmdColourMoveBack:
    case kCmdColourMoveForward: {
        const int at = CurrentEntry() ? palette->Find(selected_) : -1;
        const int to = at + (id == kCmdColourMoveBack ? -1 : 1);
        state.enabled = at >= 0 && to >= 0 && to < static_cast<int>(palette->GetEntryCount());
        return true;
    }
    case kCmdFlavourTint:
        state.enabled = palette != nullptr;
        return true;
    case kCmdFlavourDelete:
        state.enabled = palette && palette->GetStyleCount() > 1;
        return true;
    default:
        return false;
    }
}

bool GUT_PaletteWnd::OnCommand(uint32_t id) {
    const CM_Palette* palette = CurrentPalette();
    UT_WString name;
    switch (id) {
    case kCmdPaletteNew: {
        const UT_WString start =
            UT_Fmt(u"Palette %d", UT_Num(static_cast<int64_t>(List() ? List()->GetPaletteCount() + 1 : 1)));
        return AskName("New Palette", start, name) && AddPalette(name);
    }
    case kCmdPaletteDuplicate:
        return DuplicatePalette();
    case kCmdPaletteRename:
        return palette && AskName("Rename Palette", palette->GetName(), name) && RenamePalette(name);
    case kCmdPaletteDelete:
        return DeletePalette();
    case kCmdColourNew:
        return AddColour();
    case kCmdColourEdit: {
        const auto* colour = dynamic_cast<const CM_Color*>(CurrentEntry());
        if (!colour)
            return false;
        QColorDialog dialog(colour->Stops().empty() ? QColor(Qt::white) : ToQColor(colour->ColorAt(0.0)),
                            this);
        dialog.setObjectName(QStringLiteral("ColourDialog"));
        dialog.setWindowTitle(gut::Tr("Edit Color: %1").arg(gut::ToQt(colour->GetName())));
        dialog.setOption(QColorDialog::ShowAlphaChannel);
        dialog.setOption(QColorDialog::DontUseNativeDialog);
        return dialog.exec() == QDialog::Accepted && EditColour(dialog.currentColor());
    }
    case kCmdColourRename: {
        const int index = palette ? palette->Find(selected_) : -1;
        if (index < 0)
            return false;
        if (QWidget* dock = parentWidget())
            dock->show();
        swatches_->setCurrentIndex(model_->index(index, 0));
        swatches_->edit(model_->index(index, 0));
        return true;
    }
    case kCmdColourDelete:
        return DeleteColour();
    case kCmdFlavourRename:
        return palette &&
               AskName("Rename Flavor", palette->GetStyles()[palette->GetCurrentStyle()].name, name) &&
               RenameFlavour(name);
    case kCmdFlavourDelete:
        return DeleteFlavour();
    case kCmdColourMoveBack:
        return MoveColour(-1);
    case kCmdColourMoveForward:
        return MoveColour(1);
    case kCmdFlavourTint: {
        if (!palette)
            return false;
        GUT_TintWnd window(this, palette->GetStyles()[palette->GetCurrentStyle()].name,
                           [this](const UT_WString& name) { return CheckFlavourName(name); });
        return window.exec() == QDialog::Accepted && TintFlavour(window.Tint(), window.NewFlavor());
    }
    default:
        return false;
    }
}
