#pragma once

#include "colour/CM_Tint.h"
#include "core/UT_String.h"

#include <QColor>
#include <QDialog>
#include <array>
#include <functional>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

// Tint Flavor: how to derive the colors of the flavor in force, either as offsets of the
// red, green and blue channels or of hue, saturation and value (each with an alpha offset),
// or as a blend towards a color, by an amount in percent; and whether the result replaces
// the flavor or goes into a new flavor of the given name. OK checks the new name with
// `checkName`, which gives the message for a name the palette refuses, else empty.
class GUT_TintWnd : public QDialog {
public:
    enum Kind { kOffsetRgb, kOffsetHsv, kBlend };

    GUT_TintWnd(QWidget* parent, const UT_WString& flavor,
                std::function<UT_WString(const UT_WString&)> checkName);

    void accept() override;
    // The accepted tint, and the new flavor's name (empty: the flavor in force changes).
    CM_Tint Tint() const;
    const UT_WString& NewFlavor() const { return newFlavor_; }

    QComboBox* KindField() const { return kind_; }
    QSpinBox* OffsetField(int channel) const { return offsets_[static_cast<size_t>(channel)]; }
    QSpinBox* AlphaField() const { return alpha_; }
    QSpinBox* AmountField() const { return amount_; }
    void SetBlendColor(const QColor& colour);
    QCheckBox* NewFlavorCheck() const { return intoNew_; }
    QLineEdit* NewFlavorField() const { return name_; }

private:
    // The labels and ranges of the fields for the kind chosen.
    void KindChanged();

    std::function<UT_WString(const UT_WString&)> checkName_;
    QComboBox* kind_ = nullptr;
    std::array<QSpinBox*, 3> offsets_{};
    std::array<QLabel*, 3> offsetLabels_{};
    QSpinBox* alpha_ = nullptr;
    QSpinBox* amount_ = nullptr;
    QPushButton* colourButton_ = nullptr;
    QColor blend_{Qt::white};
    QCheckBox* intoNew_ = nullptr;
    QLineEdit* name_ = nullptr;
    UT_WString newFlavor_;
};
