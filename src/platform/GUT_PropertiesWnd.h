#pragma once

#include <QDialog>
#include <cstdint>

class QLineEdit;

// The Animation Properties sheet: frame rate and camera size of the open set. The values
// are checked by the rules of the preferences of new sets; the caller runs the change.
class GUT_PropertiesWnd : public QDialog {
public:
    struct Values {
        uint32_t frameRate = 0;
        uint32_t cameraWidth = 0;
        uint32_t cameraHeight = 0;
        bool operator==(const Values&) const = default;
    };

    GUT_PropertiesWnd(QWidget* parent, const Values& values);

    void accept() override;
    // The accepted values.
    const Values& Result() const { return values_; }

    QLineEdit* FrameRateField() const { return frameRate_; }
    QLineEdit* WidthField() const { return width_; }
    QLineEdit* HeightField() const { return height_; }

private:
    Values values_;
    QLineEdit* frameRate_ = nullptr;
    QLineEdit* width_ = nullptr;
    QLineEdit* height_ = nullptr;
};
