#pragma once

#include "animationset/AS_CellIteratorObservable.h"
#include "animationset/AS_DopeSheetObservable.h"
#include "animationset/SPO_SettingsMgr.h"
#include "platform/GUT_CommandTarget.h"

#include <QAbstractScrollArea>
#include <QColor>
#include <QString>
#include <cstdint>
#include <functional>
#include <vector>

class AS_DrawingLevelObj;
class CAnimationSetObj;
class GUT_ElementCommands;
class QLineEdit;

// The timeline of the current scene: one row per element in the composition order of the
// mode (indented by depth in Sceneplanning mode), one column per frame. A drawing element
// shows the drawing's name where a run starts and a hold line over the frames it is held;
// a media element its runs; the other elements a bar over their frames. The application's
// current cell and its selection are the timeline's cursor and selection: a click, a drag
// or the arrow keys move them, and the timeline follows whoever else moves them, playback
// included. Typed text names the drawing of the selected cells; the cell commands clear,
// remove and insert cells and change how long drawings are held, each through the set's
// history, and the timeline follows the set's notifications as any change comes back.
class GUT_TimelineWnd : public QAbstractScrollArea,
                        public AS_DopeSheetObserverInterface,
                        public AS_CellIteratorObserverInterface,
                        public SPO_SettingsObserverInterface,
                        public GUT_CommandTarget {
public:
    static constexpr int kCellWidth = 32;
    static constexpr int kRowHeight = 22;
    static constexpr int kHeaderWidth = 180;
    static constexpr int kRulerHeight = 22;
    static constexpr int kIndent = 14;
    // Columns beyond the scene's last frame, where new cells go.
    static constexpr int32_t kSpareFrames = 24;

    // An element's row as the timeline last read it.
    struct Row {
        uint32_t id;
        QString name;
        uint32_t kind;
        // 0 for a top row; only Sceneplanning mode has deeper ones.
        int depth;
        QColor colour;
    };

    // What a cell shows.
    struct Cell {
        enum Kind { kEmpty, kRunStart, kHeld, kBar };
        Kind kind = kEmpty;
        // The drawing's or template's name at the start of a run.
        QString text;
        bool operator==(const Cell&) const = default;
    };

    explicit GUT_TimelineWnd(QWidget* parent = nullptr);
    ~GUT_TimelineWnd() override;

    void SetSet(CAnimationSetObj* set);
    // Where renaming in the row headers goes.
    void SetElementCommands(GUT_ElementCommands* elements) { elements_ = elements; }
    // While playing the cursor shows it and nothing is edited.
    void SetPlaying(bool playing);
    bool IsPlaying() const { return playing_; }
    // Reads the rows again: after a change of the mode.
    void Reload();

    const std::vector<Row>& Rows() const { return rows_; }
    int32_t ColumnCount() const { return columns_; }
    Cell CellAt(int32_t frame, int32_t level) const;
    // Places in the viewport.
    QRect CellRect(int32_t frame, int32_t level) const;
    QRect RowHeaderRect(int32_t level) const;
    QRect RulerRect(int32_t frame) const;

    // Opens the editor on the current cell, with `text` typed or else the drawing's name.
    bool EditCell(const QString& text = QString());
    // Opens the editor on the current element's name in its row header.
    bool EditElementName();
    // The open editor, or null.
    QLineEdit* Editor() const { return editor_; }

    // A right click: the window shows the menu of the row headers or of the cells.
    std::function<void(const QPoint& global, bool onHeader)> onContextMenu;

    void DopeSheetChanged(const void* sender, const AS_DopeSheetUpdateData& data) override;
    void DopeSheetObservableGone(const void* observable) override;
    void CellIteratorChanged(const void* sender, const AS_CellIteratorObserverData& data) override;
    void SettingsChanged(const void* sender, const SPO_SettingsUpdateData& data) override;

    bool UpdateCommand(uint32_t id, State& state) override;
    bool OnCommand(uint32_t id) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Area { kNone, kCorner, kRuler, kHeader, kCells };
    struct Hit {
        Area area = Area::kNone;
        int32_t frame = 0;
        int32_t level = 0;
    };
    // A drawing element of the selection with its selected frames.
    struct Target {
        AS_DrawingLevelObj* level;
        AS_FrameRange frames;
    };
    enum class EditKind { kCell, kElementName };

    // The current cell, when it stands in a scene of this set.
    bool HasScene() const;
    Hit HitTest(const QPoint& point) const;
    void UpdateScrollBars();
    void EnsureVisible(AS_CellPosition cell);
    // Moves the current cell; `extend` keeps the anchor and selects up to the cell.
    void MoveTo(AS_CellPosition cell, bool extend);
    void Moved();
    void PressAt(const Hit& hit, Qt::KeyboardModifiers modifiers);

    // The selection the cell commands work on: the current cell alone when it lies outside.
    AS_CellIterator Working() const;
    std::vector<Target> Targets(const AS_CellIterator& cells) const;
    AS_DrawingLevelObj* CurrentDrawingLevel() const;
    bool RelabelCells(const UT_WString& name);
    bool RemoveCells(bool shift);
    bool InsertCells();
    bool HoldOn(int32_t length);
    bool ChangeRun(int32_t by);

    void OpenEditor(EditKind kind, const QRect& where, const QString& text, bool selectAll);
    void CloseEditor(bool commit);

    void PaintRuler(QPainter& painter, int32_t firstFrame, int32_t lastFrame);
    void PaintCells(QPainter& painter, int32_t firstFrame, int32_t lastFrame, int firstRow, int lastRow);
    void PaintHeaders(QPainter& painter, int firstRow, int lastRow);

    CAnimationSetObj* set_ = nullptr;
    SPO_SettingsMgr* range_ = nullptr;
    GUT_ElementCommands* elements_ = nullptr;
    std::vector<Row> rows_;
    int32_t columns_ = kSpareFrames;
    AS_CellPosition anchor_;
    bool playing_ = false;
    bool selecting_ = false;
    bool scrubbing_ = false;
    QLineEdit* editor_ = nullptr;
    EditKind editKind_ = EditKind::kCell;
    uint32_t editedElement_ = 0xFFFFFFFFu;
};
