// The timeline of the current scene and the commands on its cells.

#include "animationset/AS_CellLevelInterface.h"
#include "animationset/AS_CompositionOrder.h"
#include "animationset/AS_DopeSheetNotifProxy.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_MediaLinkLevelObj.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/DC_CommandScope.h"
#include "animationset/DC_ReLabelCellCommand.h"
#include "animationset/DC_RemoveCellsCommand.h"
#include "animationset/DC_ReplaceCellsCommand.h"
#include "animationset/DC_RestoreTimingCommand.h"
#include "core/PR_Preferences.h"
#include "core/PR_UserColorSettings.h"
#include "core/UT_MessageHandler.h"
#include "core/UT_NameRules.h"
#include "platform/GUT_Commands.h"
#include "platform/GUT_ElementCommands.h"
#include "platform/GUT_TimelineWnd.h"
#include "platform/detail/GUT_Qt.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>

namespace {

constexpr const char16_t* kInsertName = u"Insert Blank Cells";

AS_CellIteratorObservable& CurrentCell() {
    return AS_CellIteratorObservable::Instance();
}

UT_WString DrawingName(const AS_DrawingLevelObj& level, uint32_t id) {
    const AS_DopeSheetDrawingObj* drawing =
        level.CommonDrawing() ? level.CommonDrawing()->FindDrawing(id) : nullptr;
    return drawing ? drawing->GetName() : UT_WString();
}

// Empty when the name can name a drawing; else the message to show.
UT_WString CheckDrawingName(const UT_WString& name) {
    switch (UT_CheckName(name)) {
    case UT_NameProblem::kNone:
        return {};
    case UT_NameProblem::kEmpty:
        return u"The name of a drawing cannot be empty.";
    case UT_NameProblem::kTooLong:
    case UT_NameProblem::kForbiddenCharacter:
        break;
    }
    return u"This name contains invalid characters; please choose a different one.";
}

QColor RecordColour(const PR_ColorRecord& record) {
    return QColor(record.red, record.green, record.blue);
}

} // namespace

GUT_TimelineWnd::GUT_TimelineWnd(QWidget* parent) : QAbstractScrollArea(parent) {
    setObjectName(QStringLiteral("Timeline"));
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(false);
    setMinimumHeight(kRulerHeight + 4 * kRowHeight);
    horizontalScrollBar()->setSingleStep(kCellWidth);
    verticalScrollBar()->setSingleStep(kRowHeight);
    CurrentCell().Attach(this);
}

GUT_TimelineWnd::~GUT_TimelineWnd() {
    CurrentCell().Detach(this);
    SetSet(nullptr);
}

void GUT_TimelineWnd::SetSet(CAnimationSetObj* set) {
    CloseEditor(false);
    if (set_)
        set_->NotifProxy().Detach(this);
    if (range_)
        range_->Detach(this);
    set_ = set;
    range_ = set ? set->SettingsManager() : nullptr;
    if (set_)
        set_->NotifProxy().Attach(this);
    if (range_)
        range_->Attach(this);
    playing_ = false;
    Reload();
}

void GUT_TimelineWnd::SetPlaying(bool playing) {
    playing_ = playing;
    if (playing)
        CloseEditor(false);
    viewport()->update();
}

bool GUT_TimelineWnd::HasScene() const {
    const AS_CellIterator& cell = CurrentCell();
    return set_ && cell.Scene() && cell.Order() && set_->FindScene(cell.Scene()->SceneId()) == cell.Scene();
}

void GUT_TimelineWnd::Reload() {
    rows_.clear();
    columns_ = kSpareFrames;
    if (HasScene()) {
        const AS_CellIterator& cell = CurrentCell();
        const CDopeSheetObj& scene = *cell.Scene();
        const AS_CompositionOrder& order = *cell.Order();
        const bool tree = &order == &scene.SceneplanningOrder();
        const PR_Preferences& preferences = PR_Preferences::Instance();
        for (int i = 0; i < order.GetShownCount(); ++i) {
            const AS_DopeSheetLevelObj* level = order.GetLevel(i);
            if (!level)
                continue;
            const int depth = tree ? std::max(0, order.GetDepth(order.RowOfShownIndex(i)) - 1) : 0;
            const QColor colour = RecordColour(set_->UserColors().GetColor(
                PR_UserColorSettings::kElementColors, {scene.SceneId(), level->GetId()}, level->GetKind(),
                preferences));
            rows_.push_back(
                {level->GetId(), gut::ToQt(level->GetDisplayName()), level->GetKind(), depth, colour});
        }
        // Every frame of the scene and of the elements, with room to go on.
        int32_t last = cell.GetSceneLastFrame();
        for (int i = 0; i < order.GetShownCount(); ++i)
            if (const AS_DopeSheetLevelObj* level = order.GetLevel(i); level && level->GetDuration() > 0)
                last = std::max(last, level->GetLastFrame());
        columns_ = std::max(last, cell.Frame()) + 1 + kSpareFrames;
    }
    UpdateScrollBars();
    viewport()->update();
}

void GUT_TimelineWnd::UpdateScrollBars() {
    const int visibleColumns = std::max(0, viewport()->width() - kHeaderWidth) / kCellWidth;
    columns_ = std::max(columns_, visibleColumns);
    const int width = columns_ * kCellWidth;
    const int height = static_cast<int>(rows_.size()) * kRowHeight;
    horizontalScrollBar()->setPageStep(std::max(kCellWidth, viewport()->width() - kHeaderWidth));
    horizontalScrollBar()->setRange(0, std::max(0, width - (viewport()->width() - kHeaderWidth)));
    verticalScrollBar()->setPageStep(std::max(kRowHeight, viewport()->height() - kRulerHeight));
    verticalScrollBar()->setRange(0, std::max(0, height - (viewport()->height() - kRulerHeight)));
}

QRect GUT_TimelineWnd::CellRect(int32_t frame, int32_t level) const {
    return QRect(kHeaderWidth + frame * kCellWidth - horizontalScrollBar()->value(),
                 kRulerHeight + level * kRowHeight - verticalScrollBar()->value(), kCellWidth, kRowHeight);
}

QRect GUT_TimelineWnd::RowHeaderRect(int32_t level) const {
    return QRect(0, kRulerHeight + level * kRowHeight - verticalScrollBar()->value(), kHeaderWidth,
                 kRowHeight);
}

QRect GUT_TimelineWnd::RulerRect(int32_t frame) const {
    return QRect(kHeaderWidth + frame * kCellWidth - horizontalScrollBar()->value(), 0, kCellWidth,
                 kRulerHeight);
}

GUT_TimelineWnd::Hit GUT_TimelineWnd::HitTest(const QPoint& point) const {
    Hit hit;
    const int x = point.x() - kHeaderWidth + horizontalScrollBar()->value();
    const int y = point.y() - kRulerHeight + verticalScrollBar()->value();
    hit.frame = x >= 0 ? std::min(x / kCellWidth, AS_kFrameLimit - 1) : -1;
    hit.level = y >= 0 ? y / kRowHeight : -1;
    const bool inRuler = point.y() < kRulerHeight;
    const bool inHeader = point.x() < kHeaderWidth;
    if (inRuler && inHeader)
        hit.area = Area::kCorner;
    else if (inRuler)
        hit.area = Area::kRuler;
    else if (hit.level >= static_cast<int32_t>(rows_.size()))
        hit.area = Area::kNone;
    else
        hit.area = inHeader ? Area::kHeader : Area::kCells;
    return hit;
}

GUT_TimelineWnd::Cell GUT_TimelineWnd::CellAt(int32_t frame, int32_t level) const {
    if (!HasScene() || frame < 0)
        return {};
    const AS_DopeSheetLevelObj* element = CurrentCell().Order()->GetLevel(level);
    if (!element)
        return {};
    if (const auto* drawing = dynamic_cast<const AS_DrawingLevelObj*>(element)) {
        const uint32_t id = drawing->DrawingIdAt(frame);
        if (id == AS_kInvalidId)
            return {};
        if (frame > 0 && drawing->DrawingIdAt(frame - 1) == id)
            return {Cell::kHeld, {}};
        return {Cell::kRunStart, gut::ToQt(DrawingName(*drawing, id))};
    }
    if (const auto* media = dynamic_cast<const AS_MediaLinkLevelObj*>(element)) {
        const int run = media->CellIndexAt(frame);
        if (run < 0)
            return {};
        if (media->Cells()[static_cast<size_t>(run)].start != static_cast<uint32_t>(frame))
            return {Cell::kHeld, {}};
        return {Cell::kRunStart, gut::ToQt(media->CellName(frame))};
    }
    if (element->GetDuration() > 0 && frame >= element->GetFirstFrame() && frame <= element->GetLastFrame())
        return {Cell::kBar, {}};
    return {};
}

// ---- painting

void GUT_TimelineWnd::paintEvent(QPaintEvent*) {
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), palette().color(QPalette::Base));
    const int32_t firstFrame = horizontalScrollBar()->value() / kCellWidth;
    const int32_t lastFrame =
        std::min(columns_ - 1, firstFrame + (viewport()->width() - kHeaderWidth) / kCellWidth + 1);
    const int firstRow = verticalScrollBar()->value() / kRowHeight;
    const int lastRow = std::min(static_cast<int>(rows_.size()) - 1,
                                 firstRow + (viewport()->height() - kRulerHeight) / kRowHeight + 1);
    if (HasScene()) {
        painter.save();
        painter.setClipRect(QRect(kHeaderWidth, kRulerHeight, viewport()->width(), viewport()->height()));
        PaintCells(painter, firstFrame, lastFrame, firstRow, lastRow);
        painter.restore();
    }
    painter.save();
    painter.setClipRect(QRect(kHeaderWidth, 0, viewport()->width(), kRulerHeight));
    PaintRuler(painter, firstFrame, lastFrame);
    painter.restore();
    painter.save();
    painter.setClipRect(QRect(0, kRulerHeight, kHeaderWidth, viewport()->height()));
    PaintHeaders(painter, firstRow, lastRow);
    painter.restore();

    // The corner: the current frame, as the user counts it.
    const QRect corner(0, 0, kHeaderWidth, kRulerHeight);
    painter.fillRect(corner, palette().color(QPalette::Button));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(corner.bottomLeft(), corner.bottomRight());
    painter.drawLine(corner.topRight(), corner.bottomRight());
    if (HasScene()) {
        painter.setPen(palette().color(QPalette::ButtonText));
        painter.drawText(corner.adjusted(6, 0, -6, 0), Qt::AlignLeft | Qt::AlignVCenter,
                         gut::Tr("Frame %1").arg(CurrentCell().Frame() + 1));
    }
}

void GUT_TimelineWnd::PaintRuler(QPainter& painter, int32_t firstFrame, int32_t lastFrame) {
    const QRect ruler(kHeaderWidth, 0, viewport()->width() - kHeaderWidth, kRulerHeight);
    painter.fillRect(ruler, palette().color(QPalette::Button));
    const int second = set_ ? static_cast<int>(std::max<uint32_t>(set_->FrameRate(), 1)) : 12;
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    painter.setFont(small);
    // The frame range of scene planning, as a band along the bottom.
    if (range_ && HasScene() && range_->GetFirstFrame() >= 0 &&
        range_->GetLastFrame() >= range_->GetFirstFrame()) {
        const QRect first = RulerRect(range_->GetFirstFrame());
        const QRect last = RulerRect(range_->GetLastFrame());
        const QColor band =
            range_->IsCustomRange() ? QColor(0x3b, 0x82, 0xd1) : palette().color(QPalette::Mid);
        painter.fillRect(QRect(first.left(), ruler.bottom() - 4, last.right() - first.left() + 1, 4), band);
    }
    const int32_t current = HasScene() ? CurrentCell().Frame() : -1;
    for (int32_t frame = firstFrame; frame <= lastFrame; ++frame) {
        const QRect cell = RulerRect(frame);
        if (frame == current) {
            painter.fillRect(cell.adjusted(0, 0, 0, -5),
                             playing_ ? QColor(0xe0, 0x6c, 0x00) : QColor(0xd0, 0x30, 0x30));
            painter.setPen(Qt::white);
        } else {
            painter.setPen(palette().color(QPalette::ButtonText));
        }
        painter.drawText(cell.adjusted(0, 0, 0, -4), Qt::AlignCenter, QString::number(frame + 1));
        painter.setPen(palette().color((frame + 1) % second == 0 ? QPalette::Dark : QPalette::Midlight));
        painter.drawLine(cell.topRight(), cell.bottomRight());
    }
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(ruler.bottomLeft(), ruler.bottomRight());
}

void GUT_TimelineWnd::PaintCells(QPainter& painter, int32_t firstFrame, int32_t lastFrame, int firstRow,
                                 int lastRow) {
    const AS_CellIterator& current = CurrentCell();
    const int second = static_cast<int>(std::max<uint32_t>(set_->FrameRate(), 1));
    const QColor line = palette().color(QPalette::Midlight);
    const QColor secondLine = palette().color(QPalette::Mid);
    for (int row = firstRow; row <= lastRow; ++row) {
        const QColor colour = rows_[static_cast<size_t>(row)].colour;
        const QColor fill = colour.lighter(175);
        for (int32_t frame = firstFrame; frame <= lastFrame; ++frame) {
            const QRect rect = CellRect(frame, row);
            const Cell cell = CellAt(frame, row);
            switch (cell.kind) {
            case Cell::kEmpty:
                break;
            case Cell::kRunStart:
                painter.fillRect(rect.adjusted(0, 2, 0, -2), fill);
                painter.fillRect(QRect(rect.left(), rect.top() + 2, 3, rect.height() - 4), colour);
                painter.setPen(palette().color(QPalette::Text));
                painter.drawText(rect.adjusted(5, 0, -1, 0), Qt::AlignLeft | Qt::AlignVCenter, cell.text);
                break;
            case Cell::kHeld:
                painter.fillRect(rect.adjusted(0, 2, 0, -2), fill);
                painter.setPen(QPen(colour.darker(130), 2));
                painter.drawLine(rect.left(), rect.center().y(), rect.right(), rect.center().y());
                break;
            case Cell::kBar:
                painter.fillRect(rect.adjusted(0, 6, 0, -6), colour.lighter(130));
                break;
            }
            painter.setPen((frame + 1) % second == 0 ? secondLine : line);
            painter.drawLine(rect.topRight(), rect.bottomRight());
        }
        painter.setPen(line);
        const QRect first = CellRect(firstFrame, row);
        painter.drawLine(first.left(), first.bottom(), viewport()->width(), first.bottom());
    }
    // The selection, then the current frame's column and the current cell.
    QColor selection = palette().color(QPalette::Highlight);
    selection.setAlpha(70);
    for (size_t i = 0; i < current.SelectedLevels().size(); ++i) {
        const int32_t level = current.SelectedLevels()[i];
        const AS_FrameRange& frames = current.SelectedFrames()[i];
        if (level < firstRow || level > lastRow || frames.count <= 0)
            continue;
        const int32_t from = std::max(frames.first, firstFrame);
        const int32_t to = std::min(frames.Last(), lastFrame);
        if (from > to)
            continue;
        const QRect left = CellRect(from, level);
        const QRect right = CellRect(to, level);
        painter.fillRect(QRect(left.topLeft(), right.bottomRight()), selection);
    }
    QColor column = playing_ ? QColor(0xe0, 0x6c, 0x00) : QColor(0xd0, 0x30, 0x30);
    column.setAlpha(45);
    const QRect cursor = CellRect(current.Frame(), 0);
    painter.fillRect(QRect(cursor.left(), kRulerHeight, kCellWidth, viewport()->height()), column);
    if (current.LevelIndex() >= 0 && current.LevelIndex() < static_cast<int32_t>(rows_.size())) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(CellRect(current.Frame(), current.LevelIndex()).adjusted(1, 1, -1, -1));
    }
}

void GUT_TimelineWnd::PaintHeaders(QPainter& painter, int firstRow, int lastRow) {
    painter.fillRect(QRect(0, kRulerHeight, kHeaderWidth, viewport()->height()),
                     palette().color(QPalette::Window));
    const int32_t currentLevel = HasScene() ? CurrentCell().LevelIndex() : -1;
    QFont bold = font();
    bold.setBold(true);
    for (int row = firstRow; row <= lastRow; ++row) {
        const Row& element = rows_[static_cast<size_t>(row)];
        const QRect rect = RowHeaderRect(row);
        if (row == currentLevel)
            painter.fillRect(rect, palette().color(QPalette::AlternateBase));
        const int indent = 4 + element.depth * kIndent;
        const QRect swatch(rect.left() + indent, rect.top() + 5, rect.height() - 10, rect.height() - 10);
        painter.fillRect(swatch, element.colour);
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawLine(rect.left(), rect.bottom(), rect.right(), rect.bottom());
        painter.drawLine(rect.topRight(), rect.bottomRight());
        const QString kind = gut::Tr(GUT_KindName(element.kind));
        const int kindWidth = painter.fontMetrics().horizontalAdvance(kind) + 8;
        painter.setFont(row == currentLevel ? bold : font());
        painter.setPen(palette().color(QPalette::WindowText));
        const QRect text(swatch.right() + 6, rect.top(), rect.right() - swatch.right() - 6 - kindWidth,
                         rect.height());
        painter.drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                         painter.fontMetrics().elidedText(element.name, Qt::ElideRight, text.width()));
        painter.setFont(font());
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect.adjusted(0, 0, -6, 0), Qt::AlignRight | Qt::AlignVCenter, kind);
    }
}

void GUT_TimelineWnd::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    UpdateScrollBars();
}

void GUT_TimelineWnd::scrollContentsBy(int, int) {
    if (editor_)
        CloseEditor(false);
    viewport()->update();
}

// ---- the current cell

void GUT_TimelineWnd::EnsureVisible(AS_CellPosition cell) {
    const QRect rect = CellRect(cell.frame, std::max(cell.level, 0));
    QScrollBar* horizontal = horizontalScrollBar();
    if (rect.left() < kHeaderWidth)
        horizontal->setValue(horizontal->value() - (kHeaderWidth - rect.left()));
    else if (rect.right() > viewport()->width())
        horizontal->setValue(horizontal->value() + rect.right() - viewport()->width() + 1);
    QScrollBar* vertical = verticalScrollBar();
    if (rect.top() < kRulerHeight)
        vertical->setValue(vertical->value() - (kRulerHeight - rect.top()));
    else if (rect.bottom() > viewport()->height())
        vertical->setValue(vertical->value() + rect.bottom() - viewport()->height() + 1);
}

void GUT_TimelineWnd::Moved() {
    AS_CellIteratorObservable& cell = CurrentCell();
    cell.NotifyMove(this, AS_CellIteratorObserverData::kMoved);
    if (cell.Frame() + 1 + kSpareFrames > columns_) {
        columns_ = cell.Frame() + 1 + kSpareFrames;
        UpdateScrollBars();
    }
    EnsureVisible(cell.Cell());
    viewport()->update();
}

void GUT_TimelineWnd::MoveTo(AS_CellPosition cell, bool extend) {
    if (!HasScene() || rows_.empty())
        return;
    cell.frame = std::clamp(cell.frame, 0, AS_kFrameLimit - 1);
    cell.level = std::clamp(cell.level, 0, static_cast<int32_t>(rows_.size()) - 1);
    AS_CellIteratorObservable& current = CurrentCell();
    if (!extend)
        anchor_ = cell;
    current.SetSelection(anchor_, cell);
    current.SetCell(cell);
    Moved();
}

void GUT_TimelineWnd::PressAt(const Hit& hit, Qt::KeyboardModifiers modifiers) {
    AS_CellIteratorObservable& current = CurrentCell();
    const bool extend = modifiers & Qt::ShiftModifier;
    switch (hit.area) {
    case Area::kCells:
        MoveTo({hit.frame, hit.level}, extend);
        selecting_ = true;
        break;
    case Area::kRuler:
        if (hit.frame >= 0 && !rows_.empty()) {
            MoveTo({hit.frame, std::max(current.LevelIndex(), 0)}, false);
            scrubbing_ = true;
        }
        break;
    case Area::kHeader: {
        // The whole row: every frame of the scene.
        const int32_t last = std::max(current.GetSceneLastFrame(), 0);
        if (!extend)
            anchor_ = {0, hit.level};
        current.SetSelection({0, anchor_.level}, {last, hit.level});
        current.SetCell({current.Frame(), hit.level});
        Moved();
        break;
    }
    default:
        break;
    }
}

void GUT_TimelineWnd::mousePressEvent(QMouseEvent* event) {
    setFocus(Qt::MouseFocusReason);
    if (!HasScene())
        return;
    const Hit hit = HitTest(event->position().toPoint());
    if (event->button() == Qt::RightButton) {
        // A right click inside the selection keeps it for the menu.
        const AS_CellIterator& current = CurrentCell();
        const auto& levels = current.SelectedLevels();
        const auto at = std::find(levels.begin(), levels.end(), hit.level);
        const bool inside =
            at != levels.end() &&
            (hit.area == Area::kHeader ||
             current.SelectedFrames()[static_cast<size_t>(at - levels.begin())].Contains(hit.frame));
        if (!inside)
            PressAt(hit, {});
        selecting_ = false;
        return;
    }
    if (event->button() == Qt::LeftButton)
        PressAt(hit, event->modifiers());
}

void GUT_TimelineWnd::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton) || (!selecting_ && !scrubbing_))
        return;
    const Hit hit = HitTest(event->position().toPoint());
    AS_CellIteratorObservable& current = CurrentCell();
    if (scrubbing_) {
        if (std::max(hit.frame, 0) != current.Frame())
            MoveTo({std::max(hit.frame, 0), current.LevelIndex()}, false);
        return;
    }
    const AS_CellPosition cell{std::max(hit.frame, 0),
                               std::clamp(hit.level, 0, std::max(static_cast<int32_t>(rows_.size()) - 1, 0))};
    if (cell != current.Cell())
        MoveTo(cell, true);
}

void GUT_TimelineWnd::mouseReleaseEvent(QMouseEvent*) {
    selecting_ = false;
    scrubbing_ = false;
}

void GUT_TimelineWnd::mouseDoubleClickEvent(QMouseEvent* event) {
    const Hit hit = HitTest(event->position().toPoint());
    if (hit.area == Area::kHeader)
        EditElementName();
    else if (hit.area == Area::kCells)
        EditCell();
}

void GUT_TimelineWnd::keyPressEvent(QKeyEvent* event) {
    if (!HasScene()) {
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    const AS_CellPosition cell = CurrentCell().Cell();
    const bool extend = event->modifiers() & Qt::ShiftModifier;
    const bool plain = !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    switch (event->key()) {
    case Qt::Key_Left:
        MoveTo({cell.frame - 1, cell.level}, extend);
        return;
    case Qt::Key_Right:
        MoveTo({cell.frame + 1, cell.level}, extend);
        return;
    case Qt::Key_Up:
        MoveTo({cell.frame, cell.level - 1}, extend);
        return;
    case Qt::Key_Down:
        MoveTo({cell.frame, cell.level + 1}, extend);
        return;
    case Qt::Key_Home:
        MoveTo({0, cell.level}, extend);
        return;
    case Qt::Key_End:
        MoveTo({CurrentCell().GetSceneLastFrame(), cell.level}, extend);
        return;
    case Qt::Key_Escape:
        MoveTo(cell, false);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (plain) {
            EditCell();
            return;
        }
        break;
    default:
        break;
    }
    const QString text = event->text();
    if (plain && !text.isEmpty() && text.at(0).isPrint() && !text.at(0).isSpace()) {
        EditCell(text);
        return;
    }
    QAbstractScrollArea::keyPressEvent(event);
}

void GUT_TimelineWnd::contextMenuEvent(QContextMenuEvent* event) {
    const Hit hit = HitTest(event->pos());
    if (onContextMenu && (hit.area == Area::kHeader || hit.area == Area::kCells))
        onContextMenu(event->globalPos(), hit.area == Area::kHeader);
}

void GUT_TimelineWnd::DopeSheetChanged(const void*, const AS_DopeSheetUpdateData& data) {
    // A removed element must not be renamed by an editor that is still open.
    if (editor_ && data.category != AS_DopeSheetCategory::kProjectState)
        CloseEditor(false);
    Reload();
}

void GUT_TimelineWnd::DopeSheetObservableGone(const void*) {
    set_ = nullptr;
    range_ = nullptr;
    Reload();
}

void GUT_TimelineWnd::CellIteratorChanged(const void*, const AS_CellIteratorObserverData& data) {
    const AS_CellIteratorObservable& cell = CurrentCell();
    if (data.code != AS_CellIteratorObserverData::kPlaybackFrame)
        anchor_ = cell.IsSelectionEmpty()
                      ? cell.Cell()
                      : AS_CellPosition{cell.GetFirstSelectedFrame(), cell.SelectedLevels().front()};
    const bool sameRows = rows_.size() == static_cast<size_t>(cell.LevelCount());
    if (!sameRows || cell.Frame() + 1 > columns_)
        Reload();
    EnsureVisible(cell.Cell());
    viewport()->update();
}

void GUT_TimelineWnd::SettingsChanged(const void*, const SPO_SettingsUpdateData&) {
    viewport()->update();
}

// ---- editing

void GUT_TimelineWnd::OpenEditor(EditKind kind, const QRect& where, const QString& text, bool selectAll) {
    CloseEditor(false);
    editKind_ = kind;
    editor_ = new QLineEdit(viewport());
    editor_->setObjectName(kind == EditKind::kCell ? QStringLiteral("CellEditor")
                                                   : QStringLiteral("NameEditor"));
    editor_->setGeometry(where);
    editor_->setText(text);
    if (selectAll)
        editor_->selectAll();
    editor_->installEventFilter(this);
    editor_->show();
    editor_->setFocus(Qt::OtherFocusReason);
}

bool GUT_TimelineWnd::EditCell(const QString& text) {
    const AS_DrawingLevelObj* level = CurrentDrawingLevel();
    if (!level || playing_)
        return false;
    const AS_CellIterator& cell = CurrentCell();
    EnsureVisible(cell.Cell());
    const QRect rect = CellRect(cell.Frame(), cell.LevelIndex());
    const bool typed = !text.isEmpty();
    const uint32_t id = level->DrawingIdAt(cell.Frame());
    OpenEditor(EditKind::kCell, QRect(rect.topLeft(), QSize(kCellWidth * 3, kRowHeight)),
               typed ? text : gut::ToQt(id == AS_kInvalidId ? UT_WString() : DrawingName(*level, id)),
               !typed);
    return true;
}

bool GUT_TimelineWnd::EditElementName() {
    if (!HasScene() || playing_ || !elements_)
        return false;
    const AS_DopeSheetLevelObj* level = CurrentCell().GetLevel();
    if (!level)
        return false;
    editedElement_ = level->GetId();
    EnsureVisible(CurrentCell().Cell());
    OpenEditor(EditKind::kElementName, RowHeaderRect(CurrentCell().LevelIndex()), gut::ToQt(level->GetName()),
               true);
    return true;
}

void GUT_TimelineWnd::CloseEditor(bool commit) {
    if (!editor_)
        return;
    QLineEdit* editor = editor_;
    editor_ = nullptr;
    const UT_WString text = gut::FromQt(editor->text().trimmed());
    editor->removeEventFilter(this);
    editor->hide();
    editor->deleteLater();
    setFocus(Qt::OtherFocusReason);
    if (!commit || !HasScene())
        return;
    if (editKind_ == EditKind::kElementName) {
        if (elements_)
            elements_->Rename(editedElement_, text);
        return;
    }
    if (RelabelCells(text) && CurrentCell().IsSingleCell()) {
        // On to the next frame, ready for the next name.
        const AS_CellPosition cell = CurrentCell().Cell();
        MoveTo({cell.frame + 1, cell.level}, false);
    }
}

bool GUT_TimelineWnd::eventFilter(QObject* watched, QEvent* event) {
    if (watched == editor_) {
        // Taken here: the line edit would pass Enter on to the timeline, which opens the
        // editor again.
        const int key = event->type() == QEvent::KeyPress ? static_cast<QKeyEvent*>(event)->key() : 0;
        if (key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter) {
            CloseEditor(key != Qt::Key_Escape);
            return true;
        }
        if (event->type() == QEvent::FocusOut) {
            CloseEditor(false);
            return false;
        }
    }
    return QAbstractScrollArea::eventFilter(watched, event);
}

// ---- the cell commands

AS_DrawingLevelObj* GUT_TimelineWnd::CurrentDrawingLevel() const {
    if (!HasScene())
        return nullptr;
    auto* level = dynamic_cast<AS_DrawingLevelObj*>(CurrentCell().GetLevel());
    return level && level->HasDrawingCells() ? level : nullptr;
}

AS_CellIterator GUT_TimelineWnd::Working() const {
    AS_CellIterator cells = CurrentCell();
    if (!cells.IsInSelection())
        cells.SelectCurrentCell();
    return cells;
}

std::vector<GUT_TimelineWnd::Target> GUT_TimelineWnd::Targets(const AS_CellIterator& cells) const {
    std::vector<Target> targets;
    if (!HasScene())
        return targets;
    for (size_t i = 0; i < cells.SelectedLevels().size(); ++i) {
        auto* level = dynamic_cast<AS_DrawingLevelObj*>(cells.Order()->GetLevel(cells.SelectedLevels()[i]));
        const AS_FrameRange& frames = cells.SelectedFrames()[i];
        if (level && level->HasDrawingCells() && frames.count > 0)
            targets.push_back({level, frames});
    }
    return targets;
}

bool GUT_TimelineWnd::RelabelCells(const UT_WString& name) {
    const UT_WString refusal = CheckDrawingName(name);
    if (!refusal.empty()) {
        UT_MessageHandler::Post(UT_MessageHandler::kWarning, refusal);
        return false;
    }
    const AS_CellIterator cells = Working();
    // A command without a drawing element to change would empty the history.
    if (Targets(cells).empty())
        return false;
    DC_ReLabelCellCommand command(*set_, DC_CellSelection(cells), name);
    return command.Run(DC_ReLabelCellCommand::kName);
}

bool GUT_TimelineWnd::RemoveCells(bool shift) {
    const AS_CellIterator cells = Working();
    DC_RemoveCellsCommand command(*set_, DC_CellSelection(cells), shift);
    return command.Run(shift ? DC_RemoveCellsCommand::kDeleteName : DC_RemoveCellsCommand::kCutName);
}

bool GUT_TimelineWnd::InsertCells() {
    const AS_CellIterator cells = Working();
    std::vector<DC_LevelCells> changed;
    for (const Target& target : Targets(cells)) {
        const auto size = static_cast<int32_t>(target.level->Cells().size());
        if (target.frames.first >= size)
            continue;
        // Blank records in front of the cells from the first selected frame on.
        std::vector<AS_CellRecord> records(static_cast<size_t>(target.frames.count));
        const std::vector<AS_CellRecord> after =
            target.level->CellRecords(target.frames.first, size - target.frames.first);
        records.insert(records.end(), after.begin(), after.end());
        changed.push_back({target.level->GetId(), target.frames.first, std::move(records),
                           static_cast<size_t>(size) + static_cast<size_t>(target.frames.count)});
    }
    if (changed.empty())
        return false;
    DC_ReplaceCellsCommand command(*set_, DC_CellSelection(cells), std::move(changed));
    return command.Run(kInsertName);
}

bool GUT_TimelineWnd::HoldOn(int32_t length) {
    const AS_CellIterator cells = Working();
    std::vector<DC_CellSelection> selections;
    for (const Target& target : Targets(cells))
        if (!target.level->IsRangeEmpty(target.frames.first, target.frames.Last()))
            selections.push_back(DC_CellSelection::OfElement(
                cells.Scene()->SceneId(), target.level->GetId(), target.frames.first, target.frames.Last(),
                cells.Order() == &cells.Scene()->SceneplanningOrder()));
    if (selections.empty())
        return false;
    if (selections.size() == 1) {
        DC_RestoreTimingCommand command(*set_, selections.front(), length);
        return command.Run(DC_RestoreTimingCommand::kName);
    }
    DC_CommandScope scope(*set_, DC_RestoreTimingCommand::kName);
    for (const DC_CellSelection& selection : selections) {
        DC_RestoreTimingCommand command(*set_, selection, length);
        if (!scope.Execute(command))
            return false;
    }
    return true;
}

bool GUT_TimelineWnd::ChangeRun(int32_t by) {
    const AS_DrawingLevelObj* level = CurrentDrawingLevel();
    const AS_CellIterator& cell = CurrentCell();
    if (!level || level->DrawingIdAt(cell.Frame()) == AS_kInvalidId)
        return false;
    int32_t start = cell.Frame();
    const int32_t length = level->GetRunLength(start);
    if (length + by < 1)
        return false;
    DC_RestoreTimingCommand command(
        *set_,
        DC_CellSelection::OfElement(cell.Scene()->SceneId(), level->GetId(), start, start,
                                    cell.Order() == &cell.Scene()->SceneplanningOrder()),
        length + by, true);
    return command.Run(by > 0 ? DC_RestoreTimingCommand::kAddName : DC_RestoreTimingCommand::kRemoveName);
}

bool GUT_TimelineWnd::UpdateCommand(uint32_t id, State& state) {
    if (!GUT_IsTimelineCommand(id))
        return false;
    state.enabled = false;
    if (!HasScene() || playing_)
        return true;
    const AS_CellIterator cells = Working();
    const std::vector<Target> targets = Targets(cells);
    auto any = [&targets](auto test) { return std::any_of(targets.begin(), targets.end(), test); };
    auto hasDrawings = [](const Target& t) {
        return !t.level->IsRangeEmpty(t.frames.first, t.frames.Last());
    };
    auto reachesExposure = [](const Target& t) {
        return static_cast<size_t>(t.frames.first) < t.level->Cells().size();
    };
    const AS_DrawingLevelObj* level = CurrentDrawingLevel();
    const bool onRun = level && level->DrawingIdAt(cells.Frame()) != AS_kInvalidId;
    switch (id) {
    case kCmdCellEdit:
        state.enabled = level != nullptr;
        break;
    case kCmdCellClear:
    case kCmdCellOnes:
    case kCmdCellTwos:
    case kCmdCellThrees:
        state.enabled = any(hasDrawings);
        break;
    case kCmdCellRemove:
    case kCmdCellInsert:
        state.enabled = any(reachesExposure);
        break;
    case kCmdCellExtendRun:
        state.enabled = onRun;
        break;
    case kCmdCellShortenRun: {
        int32_t start = cells.Frame();
        state.enabled = onRun && level->GetRunLength(start) > 1;
        break;
    }
    default:
        break;
    }
    return true;
}

bool GUT_TimelineWnd::OnCommand(uint32_t id) {
    switch (id) {
    case kCmdCellEdit:
        return EditCell();
    case kCmdCellClear:
        return RemoveCells(false);
    case kCmdCellRemove:
        return RemoveCells(true);
    case kCmdCellInsert:
        return InsertCells();
    case kCmdCellOnes:
        return HoldOn(1);
    case kCmdCellTwos:
        return HoldOn(2);
    case kCmdCellThrees:
        return HoldOn(3);
    case kCmdCellExtendRun:
        return ChangeRun(1);
    case kCmdCellShortenRun:
        return ChangeRun(-1);
    default:
        return false;
    }
}
