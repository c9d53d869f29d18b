// The views of an open document.

#include "animationset/AS_CompositionOrder.h"
#include "animationset/AS_DopeSheetNotifProxy.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/DC_AddSceneCommand.h"
#include "animationset/DC_ChangeSceneProperties.h"
#include "animationset/DC_DeleteSceneCommand.h"
#include "animationset/DC_ReorderScene.h"
#include "animationset/DC_ToggleSceneVisibility.h"
#include "core/PR_Preferences.h"
#include "core/UT_MessageHandler.h"
#include "platform/GUT_Commands.h"
#include "platform/GUT_SceneListWnd.h"
#include "platform/GUT_SceneOverview.h"
#include "platform/detail/GUT_Qt.h"

#include <QAbstractListModel>
#include <QDockWidget>
#include <QHBoxLayout>
#include <QListView>
#include <QMimeData>
#include <QPaintEvent>
#include <QPainter>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace {

constexpr int kMargin = 16;
constexpr int kRowHeight = 24;

} // namespace

GUT_SceneOverview::GUT_SceneOverview(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("SceneOverview"));
    setAutoFillBackground(true);
    setMinimumSize(320, 160);
    AS_CellIteratorObservable::Instance().Attach(this);
}

GUT_SceneOverview::~GUT_SceneOverview() {
    AS_CellIteratorObservable::Instance().Detach(this);
}

void GUT_SceneOverview::SetSet(CAnimationSetObj* set) {
    set_ = set;
    update();
}

void GUT_SceneOverview::SetSceneplanningMode(bool on) {
    sceneplanning_ = on;
    update();
}

void GUT_SceneOverview::CellIteratorChanged(const void*, const AS_CellIteratorObserverData&) {
    update();
}

QString GUT_SceneOverview::ExposureText() const {
    const AS_CellIterator& cell = AS_CellIteratorObservable::Instance();
    const CDopeSheetObj* scene = set_ ? set_->CurrentScene() : nullptr;
    if (!scene || cell.Scene() != scene || !cell.Order())
        return {};
    QStringList shown;
    const AS_CompositionOrder& order = *cell.Order();
    for (int i = 0; i < order.GetShownCount(); ++i) {
        const auto* level = dynamic_cast<const AS_DrawingLevelObj*>(order.GetLevel(i));
        const uint32_t id = level ? level->DrawingIdAt(cell.Frame()) : AS_kInvalidId;
        const AS_DopeSheetDrawingObj* drawing =
            id != AS_kInvalidId && level->CommonDrawing() ? level->CommonDrawing()->FindDrawing(id) : nullptr;
        if (drawing)
            shown << gut::ToQt(level->GetDisplayName()) + QLatin1Char(' ') + gut::ToQt(drawing->GetName());
    }
    const QString frame = gut::Tr("Frame %1").arg(cell.Frame() + 1);
    return shown.isEmpty() ? frame : frame + QStringLiteral(": ") + shown.join(QStringLiteral(", "));
}

void GUT_SceneOverview::paintEvent(QPaintEvent*) {
    stage_ = rect().adjusted(kMargin, kMargin / 2 + 2 * kRowHeight + 4, -kMargin, -kMargin / 2);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const CDopeSheetObj* scene = set_ ? set_->CurrentScene() : nullptr;
    if (!scene)
        return;
    const PR_Preferences& preferences = PR_Preferences::Instance();

    // Heading: the scene, its place in the sequence, the camera and the mode.
    const auto& sequence = set_->Sequence();
    const auto position = std::find(sequence.begin(), sequence.end(), scene);
    QFont headingFont = font();
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.4);
    headingFont.setBold(true);
    painter.setFont(headingFont);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(QRect(kMargin, kMargin / 2, width() - 2 * kMargin, kRowHeight + 4),
                     Qt::AlignLeft | Qt::AlignVCenter, gut::ToQt(scene->Name()));
    painter.setFont(font());
    const QString details =
        gut::Tr("Scene %1 of %2 - camera %3 x %4 pixels, %5 frames per second - %6")
            .arg(position - sequence.begin() + 1)
            .arg(sequence.size())
            .arg(set_->CameraWidth())
            .arg(set_->CameraHeight())
            .arg(set_->FrameRate())
            .arg(sceneplanning_ ? gut::Tr("Sceneplanning mode") : gut::Tr("Drawing mode"));
    painter.drawText(QRect(kMargin, kMargin / 2 + kRowHeight + 4, width() - 2 * kMargin, kRowHeight),
                     Qt::AlignLeft | Qt::AlignVCenter, details);

    // The stage: the camera frame, scaled to fit, on the background colour of the mode.
    QColor stageColour;
    const auto& background = scene->BackgroundColour();
    const QColor sceneColour(background[0], background[1], background[2]);
    if (sceneplanning_)
        stageColour = preferences.UseSceneBGColorInSV() ? sceneColour : QColor(Qt::white);
    else
        stageColour = preferences.UseSceneBGColor() ? sceneColour
                                                    : gut::ColourFromBgr(preferences.DrawingViewBGColor());
    painter.fillRect(stage_, palette().color(QPalette::Mid));
    const double cameraWidth = std::max<uint32_t>(set_->CameraWidth(), 1);
    const double cameraHeight = std::max<uint32_t>(set_->CameraHeight(), 1);
    const double scale = std::min((stage_.width() - 2.0 * kMargin) / cameraWidth,
                                  (stage_.height() - 2.0 * kMargin) / cameraHeight);
    if (scale > 0) {
        QRectF frame(0, 0, cameraWidth * scale, cameraHeight * scale);
        frame.moveCenter(QRectF(stage_).center());
        painter.fillRect(frame, stageColour);
        painter.setPen(QPen(gut::ColourFromBgr(preferences.CameraColor()), 2));
        painter.drawRect(frame);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(frame.adjusted(6, 4, -6, -4), Qt::AlignLeft | Qt::AlignTop,
                         QStringLiteral("%1 x %2").arg(set_->CameraWidth()).arg(set_->CameraHeight()));
        painter.drawText(frame.adjusted(6, 4, -6, -4), Qt::AlignLeft | Qt::AlignBottom | Qt::TextWordWrap,
                         ExposureText());
    }
}

// ---- the scene list

namespace {

constexpr const char* kSceneRowMime = "application/x-quilmoor-scene-row";

} // namespace

// The sequence of the set as rows. Edits, check boxes and moves go to the window's
// operations, which run commands; the rows change when the notifications come back.
class GUT_SceneListWnd::RowModel : public QAbstractListModel {
public:
    explicit RowModel(GUT_SceneListWnd& window) : window_(window) {}

    void Reset() {
        beginResetModel();
        endResetModel();
    }

    CDopeSheetObj* SceneAt(int row) const {
        const CAnimationSetObj* set = window_.Set();
        if (!set || row < 0 || static_cast<size_t>(row) >= set->Sequence().size())
            return nullptr;
        return set->Sequence()[static_cast<size_t>(row)];
    }

    int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() || !window_.Set() ? 0 : static_cast<int>(window_.Set()->Sequence().size());
    }

    QVariant data(const QModelIndex& index, int role) const override {
        const CDopeSheetObj* scene = SceneAt(index.row());
        if (!scene)
            return {};
        switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole:
            return gut::ToQt(scene->Name());
        case Qt::CheckStateRole:
            return scene->IsVisible() ? Qt::Checked : Qt::Unchecked;
        case Qt::ToolTipRole:
            return gut::ToQt(CDopeSheetObj::SceneFolderName(scene->SceneId()));
        case Qt::FontRole: {
            QFont font;
            font.setBold(scene == window_.Set()->CurrentScene());
            font.setItalic(!scene->IsVisible());
            return font;
        }
        default:
            return {};
        }
    }

    bool setData(const QModelIndex& index, const QVariant& value, int role) override {
        const CDopeSheetObj* scene = SceneAt(index.row());
        if (!scene)
            return false;
        if (role == Qt::EditRole)
            return window_.RenameScene(scene->SceneId(), gut::FromQt(value.toString().trimmed()));
        if (role == Qt::CheckStateRole && (value.toInt() == Qt::Checked) != scene->IsVisible())
            return window_.ToggleVisibility(scene->SceneId());
        return false;
    }

    Qt::ItemFlags flags(const QModelIndex& index) const override {
        // Drops go between rows, never onto one.
        if (!index.isValid())
            return Qt::ItemIsDropEnabled;
        return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsUserCheckable |
               Qt::ItemIsDragEnabled;
    }

    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
    QStringList mimeTypes() const override { return {QString::fromLatin1(kSceneRowMime)}; }

    QMimeData* mimeData(const QModelIndexList& indexes) const override {
        if (indexes.isEmpty())
            return nullptr;
        auto* data = new QMimeData;
        data->setData(QString::fromLatin1(kSceneRowMime), QByteArray::number(indexes.front().row()));
        return data;
    }

    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int,
                      const QModelIndex& parent) override {
        if (action != Qt::MoveAction || !data || !data->hasFormat(QString::fromLatin1(kSceneRowMime)))
            return false;
        bool ok = false;
        const int from = data->data(QString::fromLatin1(kSceneRowMime)).toInt(&ok);
        if (!ok || !SceneAt(from))
            return false;
        // A drop onto a row goes before it; a drop below the rows goes at the end.
        int to = parent.isValid() ? parent.row() : row;
        if (to < 0)
            to = rowCount(QModelIndex());
        window_.MoveScene(static_cast<size_t>(from), static_cast<size_t>(to));
        // The rows are up to date already; the view must not remove the dragged one.
        return false;
    }

    bool moveRows(const QModelIndex& sourceParent, int sourceRow, int count,
                  const QModelIndex& destinationParent, int destinationChild) override {
        if (sourceParent.isValid() || destinationParent.isValid() || count != 1 || !SceneAt(sourceRow))
            return false;
        window_.MoveScene(static_cast<size_t>(sourceRow), static_cast<size_t>(std::max(destinationChild, 0)));
        return true;
    }

private:
    GUT_SceneListWnd& window_;
};

GUT_SceneListWnd::GUT_SceneListWnd(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("SceneList"));
    model_ = new RowModel(*this);
    model_->setParent(this);
    view_ = new QListView(this);
    view_->setModel(model_);
    view_->setSelectionMode(QAbstractItemView::SingleSelection);
    view_->setDragDropMode(QAbstractItemView::InternalMove);
    view_->setDefaultDropAction(Qt::MoveAction);
    view_->setDropIndicatorShown(true);
    view_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    connect(view_, &QListView::clicked, this, [this](const QModelIndex& index) {
        if (const CDopeSheetObj* scene = model_->SceneAt(index.row()))
            ActivateScene(scene->SceneId());
    });

    auto button = [this](const char* text, const char* tip, auto action) {
        auto* tool = new QToolButton(this);
        tool->setText(gut::Tr(text));
        tool->setToolTip(gut::Tr(tip));
        connect(tool, &QToolButton::clicked, this, action);
        return tool;
    };
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(button("+", "Add Scene", [this] { AddScene(); }));
    buttons->addWidget(button("-", "Delete Scene", [this] {
        if (const uint32_t id = CurrentSceneId(); id != AS_kInvalidId)
            DeleteScene(id);
    }));
    buttons->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(view_);
    layout->addLayout(buttons);
}

GUT_SceneListWnd::~GUT_SceneListWnd() {
    SetSet(nullptr);
}

QAbstractItemModel* GUT_SceneListWnd::Model() const {
    return model_;
}

void GUT_SceneListWnd::SetSet(CAnimationSetObj* set) {
    if (set_)
        set_->NotifProxy().Detach(this);
    set_ = set;
    if (set_)
        set_->NotifProxy().Attach(this);
    Reload();
}

void GUT_SceneListWnd::Reload() {
    model_->Reset();
    if (const CDopeSheetObj* current = set_ ? set_->CurrentScene() : nullptr) {
        const int row = set_->SequenceIndex(current->SceneId());
        if (row >= 0)
            view_->setCurrentIndex(model_->index(row, 0));
    }
}

uint32_t GUT_SceneListWnd::CurrentSceneId() const {
    const CDopeSheetObj* scene = set_ ? set_->CurrentScene() : nullptr;
    return scene ? scene->SceneId() : AS_kInvalidId;
}

void GUT_SceneListWnd::DopeSheetChanged(const void*, const AS_DopeSheetUpdateData& data) {
    if (data.category == AS_DopeSheetCategory::kScene)
        Reload();
}

void GUT_SceneListWnd::DopeSheetObservableGone(const void*) {
    set_ = nullptr;
    Reload();
}

bool GUT_SceneListWnd::AddScene() {
    if (!set_)
        return false;
    const int current = set_->SequenceIndex(CurrentSceneId());
    const size_t index = current < 0 ? set_->Sequence().size() : static_cast<size_t>(current) + 1;
    const std::unique_ptr<DC_AddSceneCommand> command = DC_AddSceneCommand::NewScene(*set_, {}, index);
    if (!command->Run(DC_AddSceneCommand::kName))
        return false;
    ActivateScene(command->SceneId());
    return true;
}

bool GUT_SceneListWnd::DeleteScene(uint32_t sceneId) {
    // The command refuses the last scene, and a refused command would empty the history.
    if (!set_ || set_->Sequence().size() < 2 || !set_->FindScene(sceneId))
        return false;
    DC_DeleteSceneCommand command(*set_, sceneId, true);
    return command.Run(DC_DeleteSceneCommand::kName);
}

bool GUT_SceneListWnd::RenameScene(uint32_t sceneId, const UT_WString& name) {
    const CDopeSheetObj* scene = set_ ? set_->FindScene(sceneId) : nullptr;
    if (!scene || scene->Name() == name)
        return false;
    const UT_WString refusal = set_->CheckSceneName(name, sceneId);
    if (!refusal.empty()) {
        UT_MessageHandler::Post(UT_MessageHandler::kWarning, refusal);
        return false;
    }
    DC_ChangeSceneProperties command(*set_, sceneId, name, scene->BackgroundColour());
    return command.Run(DC_ChangeSceneProperties::kName);
}

bool GUT_SceneListWnd::ToggleVisibility(uint32_t sceneId) {
    if (!set_ || !set_->FindScene(sceneId))
        return false;
    const UT_WString name = DC_ToggleSceneVisibility::NameFor(*set_, sceneId);
    DC_ToggleSceneVisibility command(*set_, sceneId);
    return command.Run(name);
}

bool GUT_SceneListWnd::MoveScene(size_t from, size_t to) {
    if (!set_ || from >= set_->Sequence().size() || to == from || to == from + 1)
        return false;
    DC_ReorderScene command(*set_, from, std::min(to, set_->Sequence().size()));
    return command.Run(DC_ReorderScene::kName);
}

void GUT_SceneListWnd::ActivateScene(uint32_t sceneId) {
    CDopeSheetObj* scene = set_ ? set_->FindScene(sceneId) : nullptr;
    if (!scene || scene == set_->CurrentScene())
        return;
    set_->SetCurrentScene(scene, true);
    set_->NotifProxy().NotifyScene(nullptr, kSceneActivated, scene);
}

bool GUT_SceneListWnd::UpdateCommand(uint32_t id, State& state) {
    const uint32_t current = CurrentSceneId();
    switch (id) {
    case kCmdSceneAdd:
        state.enabled = set_ != nullptr;
        return true;
    case kCmdSceneDelete:
        state.enabled = current != AS_kInvalidId && set_->Sequence().size() > 1;
        return true;
    case kCmdSceneRename:
        state.enabled = current != AS_kInvalidId;
        return true;
    case kCmdSceneToggleVisibility:
        state.enabled = current != AS_kInvalidId;
        if (state.enabled)
            state.text = UT_WString(set_->FindScene(current)->IsVisible() ? u"&Hide Scene" : u"S&how Scene");
        return true;
    default:
        return false;
    }
}

bool GUT_SceneListWnd::OnCommand(uint32_t id) {
    const uint32_t current = CurrentSceneId();
    switch (id) {
    case kCmdSceneAdd:
        return AddScene();
    case kCmdSceneDelete:
        return DeleteScene(current);
    case kCmdSceneRename: {
        // The name is edited in place, in the list.
        const int row = set_->SequenceIndex(current);
        if (row < 0)
            return false;
        if (auto* dock = qobject_cast<QDockWidget*>(parentWidget()))
            dock->show();
        const QModelIndex index = model_->index(row, 0);
        view_->setCurrentIndex(index);
        view_->edit(index);
        return true;
    }
    case kCmdSceneToggleVisibility:
        return ToggleVisibility(current);
    default:
        return false;
    }
}
