// Playback in the desktop program: the Qt message loop that the playback timer posts to,
// the playback toolbar, and the control of the open set.

#include "platform/GUT_Playback.h"

#include "animationset/AS_CellIteratorObservable.h"
#include "animationset/AS_DopeSheetNotifProxy.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/SPO_SettingsMgr.h"
#include "core/UT_SettingsStore.h"
#include "platform/GUT_Commands.h"
#include "platform/GUT_MessageLoop.h"
#include "platform/GUT_PlaybackToolBar.h"
#include "platform/detail/GUT_Qt.h"

#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QMenu>
#include <QStyle>
#include <QTimer>
#include <QToolButton>

// ---- the message loop

namespace {

// The event that carries a posted command.
class CommandEvent : public QEvent {
public:
    static QEvent::Type EventType() {
        static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
        return type;
    }
    explicit CommandEvent(uint32_t id) : QEvent(EventType()), commandId(id) {}
    const uint32_t commandId;
};

} // namespace

// Lives on the interface thread: Qt delivers the posted events to it there, in the order
// they were posted.
class GUT_MessageLoop::Receiver : public QObject {
public:
    explicit Receiver(UI_CommandTarget& target) : target_(target) {
        idle_.setSingleShot(true);
        idle_.setInterval(0);
        QObject::connect(&idle_, &QTimer::timeout, [this] { IdlePass(); });
    }

    bool event(QEvent* event) override {
        if (event->type() != CommandEvent::EventType())
            return QObject::event(event);
        const uint32_t id = static_cast<CommandEvent*>(event)->commandId;
        ++dispatched_;
        target_.OnCommand(id);
        // The idle passes count from the last command.
        idleCount_ = 0;
        idle_.start();
        return true;
    }

    size_t Dispatched() const { return dispatched_; }

private:
    void IdlePass() {
        if (target_.OnIdle(idleCount_++) && idleCount_ < kIdlePasses)
            idle_.start();
    }

    UI_CommandTarget& target_;
    QTimer idle_;
    long idleCount_ = 0;
    size_t dispatched_ = 0;
};

GUT_MessageLoop::GUT_MessageLoop(UI_CommandTarget& target) : receiver_(std::make_unique<Receiver>(target)) {}

GUT_MessageLoop::~GUT_MessageLoop() = default;

void GUT_MessageLoop::PostCommand(uint32_t commandId) {
    // Qt takes posted events from any thread and delivers them on the receiver's.
    QCoreApplication::postEvent(receiver_.get(), new CommandEvent(commandId));
}

size_t GUT_MessageLoop::Dispatched() const {
    return receiver_->Dispatched();
}

// ---- the toolbar

namespace {

QIcon ButtonIcon(QStyle* style, uint32_t command) {
    switch (command) {
    case CInteractivePlaybackControl::kFirstFrame:
        return style->standardIcon(QStyle::SP_MediaSkipBackward);
    case CInteractivePlaybackControl::kPrevFrame:
        return style->standardIcon(QStyle::SP_MediaSeekBackward);
    case CInteractivePlaybackControl::kPlay:
        return style->standardIcon(QStyle::SP_MediaPlay);
    case CInteractivePlaybackControl::kStop:
        return style->standardIcon(QStyle::SP_MediaStop);
    case CInteractivePlaybackControl::kNextFrame:
        return style->standardIcon(QStyle::SP_MediaSeekForward);
    case CInteractivePlaybackControl::kLastFrame:
        return style->standardIcon(QStyle::SP_MediaSkipForward);
    case CInteractivePlaybackControl::kToggleLoop:
        return style->standardIcon(QStyle::SP_BrowserReload);
    default:
        return {};
    }
}

constexpr uint32_t kRateCommands[] = {
    CInteractivePlaybackControl::kUseSetRate, CInteractivePlaybackControl::kRate1,
    CInteractivePlaybackControl::kRate2,      CInteractivePlaybackControl::kRate12,
    CInteractivePlaybackControl::kRate24,     CInteractivePlaybackControl::kRate30,
};

} // namespace

GUT_PlaybackToolBar::GUT_PlaybackToolBar(QWidget* parent) : QToolBar(parent) {
    setObjectName(QStringLiteral("PlaybackToolBar"));
    setWindowTitle(gut::Tr("Playback"));
    frameLine_ = new QLabel(gut::ToQt(Text()), this);
    frameLine_->setObjectName(QStringLiteral("FrameLine"));
    frameLine_->setMinimumWidth(
        frameLine_->fontMetrics().horizontalAdvance(QStringLiteral("frame: 8888/8888 (8888, 8888)")));
    frameLine_->setContentsMargins(8, 0, 8, 0);
    rateButton_ = new QToolButton(this);
    rateButton_->setObjectName(QStringLiteral("RateButton"));
    rateButton_->setText(gut::Tr("Rate"));
    rateButton_->setToolTip(gut::Tr("Frame Rate"));
    rateButton_->setPopupMode(QToolButton::InstantPopup);
}

void GUT_PlaybackToolBar::SetActions(const std::function<QAction*(uint32_t)>& actionOf) {
    clear();
    for (const Button& button : Buttons()) {
        QAction* action = actionOf(button.command);
        if (!action)
            continue;
        action->setIcon(ButtonIcon(style(), button.command));
        action->setToolTip(gut::ToQt(button.tip));
        addAction(action);
    }
    if (QAction* range = actionOf(kCmdPlayRangeMode)) {
        range->setIconText(gut::Tr("Range"));
        range->setToolTip(gut::Tr("Play the Frame Range"));
        addAction(range);
    }
    auto* rates = new QMenu(rateButton_);
    for (const uint32_t command : kRateCommands)
        if (QAction* action = actionOf(command))
            rates->addAction(action);
    delete rateButton_->menu();
    rateButton_->setMenu(rates);
    addWidget(rateButton_);
    addSeparator();
    addWidget(frameLine_);
}

void GUT_PlaybackToolBar::Changed() {
    frameLine_->setText(gut::ToQt(Text()));
    if (onChanged)
        onChanged();
}

// ---- the control of the open set

GUT_Playback::GUT_Playback(CInteractivePlayBackToolBar& toolbar, UT_SettingsStore& settings,
                           CMultimediaTimer::Clock& clock)
    : toolbar_(toolbar), settings_(settings), clock_(&clock), loop_(*this) {}

GUT_Playback::~GUT_Playback() {
    SetSet(nullptr);
}

void GUT_Playback::SetSet(CAnimationSetObj* set) {
    DropControl();
    if (set_)
        set_->NotifProxy().Detach(this);
    set_ = set;
    if (set_) {
        set_->NotifProxy().Attach(this);
        MakeControl();
    }
}

void GUT_Playback::MakeControl() {
    control_ = std::make_unique<CInteractivePlaybackControl>(*this, loop_, &toolbar_, set_->SettingsManager(),
                                                             rangeMode_, settings_, *clock_);
}

void GUT_Playback::RemakeControl() {
    const bool loop = control_ && control_->IsLooping();
    DropControl();
    if (set_) {
        MakeControl();
        control_->SetLoop(loop);
    }
}

void GUT_Playback::SetClock(CMultimediaTimer::Clock& clock) {
    clock_ = &clock;
    RemakeControl();
}

void GUT_Playback::DropControl(bool stop) {
    if (!control_)
        return;
    if (stop)
        control_->Stop();
    // The control writes its rates back as it goes: over what another program may have
    // written to the settings file meanwhile.
    if (auto* file = dynamic_cast<UT_IniSettingsStore*>(&settings_))
        file->Reload();
    control_.reset();
}

void GUT_Playback::SetRangeMode(bool on) {
    if (on == rangeMode_)
        return;
    rangeMode_ = on;
    RemakeControl();
}

void GUT_Playback::Refresh() {
    // The control reads a notification of the current cell as a move by the user, which
    // ends playback of the selection: while playing the ticks keep the line up to date.
    if (control_ && !control_->IsPlaying())
        control_->CellIteratorChanged(nullptr, AS_CellIteratorObserverData());
}

bool GUT_Playback::OnCommand(uint32_t id) {
    SPO_SettingsMgr* range = set_ ? set_->SettingsManager() : nullptr;
    switch (id) {
    case kCmdPlayRangeMode:
        SetRangeMode(!rangeMode_);
        return true;
    case kCmdPlaySetRange: {
        const AS_CellIterator& cell = AS_CellIteratorObservable::Instance();
        if (!range || cell.IsSelectionEmpty())
            return false;
        range->SetCustomRange(true);
        range->SetFirstFrame(cell.GetFirstSelectedFrame());
        range->SetLastFrame(cell.GetLastSelectedFrame());
        Refresh();
        return true;
    }
    case kCmdPlayClearRange:
        if (!range)
            return false;
        range->SetCustomRange(false);
        Refresh();
        return true;
    default:
        // Ticks that come after the control went are dropped here.
        return control_ && control_->OnCommand(id);
    }
}

bool GUT_Playback::OnIdle(long) {
    return control_ && control_->Step();
}

bool GUT_Playback::UpdateCommand(uint32_t id, State& state) {
    using Control = CInteractivePlaybackControl;
    const bool playing = IsPlaying();
    switch (id) {
    case Control::kPlay:
    case Control::kStop:
        state.enabled = control_ && toolbar_.IsEnabled(id);
        return true;
    case Control::kFirstFrame:
    case Control::kPrevFrame:
    case Control::kNextFrame:
    case Control::kLastFrame:
        state.enabled = control_ && !playing;
        return true;
    case Control::kToggleLoop:
        state.enabled = control_ != nullptr;
        state.checkable = true;
        state.checked = toolbar_.IsPressed(id);
        return true;
    case Control::kUseSetRate:
    case Control::kRate1:
    case Control::kRate2:
    case Control::kRate12:
    case Control::kRate24:
    case Control::kRate30: {
        static const std::pair<uint32_t, int32_t> kRates[] = {{Control::kRate1, 1},
                                                              {Control::kRate2, 2},
                                                              {Control::kRate12, 12},
                                                              {Control::kRate24, 24},
                                                              {Control::kRate30, 30}};
        state.enabled = control_ != nullptr;
        state.checkable = true;
        if (!control_)
            return true;
        if (id == Control::kUseSetRate) {
            state.checked = control_->UsesSetRate();
            return true;
        }
        for (const auto& [command, rate] : kRates)
            if (command == id)
                state.checked = !control_->UsesSetRate() && control_->FrameRate() == rate;
        return true;
    }
    case kCmdPlayRangeMode:
        state.enabled = control_ && !playing;
        state.checkable = true;
        state.checked = rangeMode_;
        return true;
    case kCmdPlaySetRange:
        state.enabled = control_ && !playing && !AS_CellIteratorObservable::Instance().IsSelectionEmpty();
        return true;
    case kCmdPlayClearRange:
        state.enabled =
            control_ && !playing && set_->SettingsManager() && set_->SettingsManager()->IsCustomRange();
        return true;
    default:
        return false;
    }
}

void GUT_Playback::PlaybackStarted() {
    if (onPlaying)
        onPlaying(true);
}

void GUT_Playback::PlaybackEnded() {
    if (onPlaying)
        onPlaying(false);
}

void GUT_Playback::RunIdleWork(long) {
    if (onIdleWork)
        onIdleWork();
}

void GUT_Playback::DopeSheetChanged(const void*, const AS_DopeSheetUpdateData&) {
    Refresh();
}

void GUT_Playback::DopeSheetObservableGone(const void*) {
    // The set's scenes are going: nothing may be put back in them.
    DropControl(false);
    set_ = nullptr;
}
