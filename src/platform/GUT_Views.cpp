// The views of an open document.

#include "animationset/AS_CompositionOrder.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "core/PR_Preferences.h"
#include "core/PR_UserColorSettings.h"
#include "platform/GUT_SceneOverview.h"
#include "platform/detail/GUT_Qt.h"

#include <QPaintEvent>
#include <QPainter>
#include <algorithm>

namespace {

constexpr int kMargin = 16;
constexpr int kRowHeight = 24;
constexpr int kIndent = 14;

const char* KindName(uint32_t kind) {
    switch (kind) {
    case kLevelVectorDrawing:
        return "Drawing";
    case kLevelImage:
        return "Image";
    case kLevelSound:
        return "Sound";
    case kLevelPeg:
        return "Peg";
    case kLevelCamera:
        return "Camera";
    case kLevelMedia:
        return "Media";
    case kLevelEffect:
        return "Effect";
    case kLevelParamGroup:
        return "Parameter group";
    default:
        return "Element";
    }
}

QColor RecordColour(const PR_ColorRecord& record) {
    return QColor(record.red, record.green, record.blue);
}

} // namespace

GUT_SceneOverview::GUT_SceneOverview(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("SceneOverview"));
    setAutoFillBackground(true);
    setMinimumSize(320, 240);
}

void GUT_SceneOverview::SetSet(CAnimationSetObj* set) {
    set_ = set;
    update();
}

void GUT_SceneOverview::SetSceneplanningMode(bool on) {
    sceneplanning_ = on;
    Layout();
    update();
}

void GUT_SceneOverview::Layout() {
    const QRect area = rect().adjusted(kMargin, kMargin + 2 * kRowHeight, -kMargin, -kMargin);
    if (sceneplanning_) {
        const int stageHeight = area.height() * 11 / 20;
        stage_ = QRect(area.left(), area.top(), area.width(), stageHeight);
        elements_ = QRect(area.left(), stage_.bottom() + kMargin, area.width(),
                          area.bottom() - stage_.bottom() - kMargin);
    } else {
        const int stageWidth = area.width() * 3 / 5;
        stage_ = QRect(area.left(), area.top(), stageWidth, area.height());
        elements_ = QRect(stage_.right() + kMargin, area.top(), area.right() - stage_.right() - kMargin,
                          area.height());
    }
}

void GUT_SceneOverview::paintEvent(QPaintEvent*) {
    Layout();
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
    }

    // The elements in the order of the mode: colour, name (indented by depth in the
    // tree), kind and a bar over their frames.
    const AS_CompositionOrder& order =
        sceneplanning_ ? static_cast<const AS_CompositionOrder&>(scene->SceneplanningOrder())
                       : scene->DrawingOrder();
    painter.fillRect(elements_, palette().color(QPalette::Base));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(elements_.adjusted(0, 0, -1, -1));
    int32_t end = 1;
    for (int i = 0; i < order.GetShownCount(); ++i)
        if (const AS_DopeSheetLevelObj* level = order.GetLevel(i))
            end = std::max<int32_t>(end, level->GetFirstFrame() + static_cast<int32_t>(level->GetDuration()));
    const int nameWidth = std::min(elements_.width() / 2, 220);
    for (int i = 0; i < order.GetShownCount(); ++i) {
        const AS_DopeSheetLevelObj* level = order.GetLevel(i);
        if (!level)
            continue;
        const QRect row(elements_.left() + 4, elements_.top() + 4 + i * kRowHeight, elements_.width() - 8,
                        kRowHeight - 2);
        if (row.bottom() > elements_.bottom())
            break;
        const int depth = sceneplanning_ ? std::max(0, order.GetDepth(order.RowOfShownIndex(i)) - 1) : 0;
        const QColor colour = RecordColour(set_->UserColors().GetColor(PR_UserColorSettings::kElementColors,
                                                                       {scene->SceneId(), level->GetId()},
                                                                       level->GetKind(), preferences));
        const QRect swatch(row.left() + depth * kIndent, row.top() + 4, row.height() - 8, row.height() - 8);
        painter.fillRect(swatch, colour);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(
            QRect(swatch.right() + 6, row.top(), nameWidth - swatch.right() + row.left(), row.height()),
            Qt::AlignLeft | Qt::AlignVCenter,
            gut::ToQt(level->GetDisplayName()) + QStringLiteral("  (") + gut::Tr(KindName(level->GetKind())) +
                QStringLiteral(")"));
        const QRect track(row.left() + nameWidth, row.top() + 6, row.width() - nameWidth, row.height() - 12);
        if (track.width() <= 0 || level->GetDuration() == 0)
            continue;
        const int left = track.left() + track.width() * level->GetFirstFrame() / end;
        const int right =
            track.left() +
            track.width() * (level->GetFirstFrame() + static_cast<int32_t>(level->GetDuration())) / end;
        painter.fillRect(QRect(left, track.top(), std::max(2, right - left), track.height()),
                         colour.lighter(130));
        painter.setPen(colour.darker(150));
        painter.drawRect(QRect(left, track.top(), std::max(2, right - left), track.height()));
    }
}
