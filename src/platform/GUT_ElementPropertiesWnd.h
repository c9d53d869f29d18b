#pragma once

#include "animationset/AS_BaseLevelElement.h"
#include "core/UT_String.h"

#include <QDialog>
#include <array>
#include <functional>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLineEdit;
class QSpinBox;

// The properties of an element: its name and, for drawing, image and media elements, its
// placement: type, start frame, offset, rotation and its pivot, and the scales with their
// pivot and whether they keep their proportions. OK checks the name by the scene's rules;
// a field the user did not touch keeps its value exactly, whatever the field shows.
class GUT_ElementPropertiesWnd : public QDialog {
public:
    struct Values {
        UT_WString name;
        bool hasPlacement = false;
        AS_Placement placement;
    };

    // `checkName` gives the message for a name the scene refuses, else empty.
    GUT_ElementPropertiesWnd(QWidget* parent, const Values& values,
                             std::function<UT_WString(const UT_WString&)> checkName);

    void accept() override;
    // The accepted values.
    const Values& Result() const { return values_; }

    QLineEdit* NameField() const { return name_; }
    QComboBox* TypeField() const { return type_; }
    QSpinBox* StartField() const { return start_; }
    QDoubleSpinBox* OffsetField(int axis) const { return offset_[static_cast<size_t>(axis)]; }
    QDoubleSpinBox* RotationField() const { return rotation_; }
    QDoubleSpinBox* RotationPivotField(int axis) const { return rotationPivot_[static_cast<size_t>(axis)]; }
    QDoubleSpinBox* HorizontalScaleField() const { return horizontalScale_; }
    QDoubleSpinBox* VerticalScaleField() const { return verticalScale_; }
    QDoubleSpinBox* ScalePivotField(int axis) const { return scalePivot_[static_cast<size_t>(axis)]; }
    QCheckBox* KeepProportionsField() const { return keepProportions_; }

private:
    Values values_;
    std::function<UT_WString(const UT_WString&)> checkName_;
    QLineEdit* name_ = nullptr;
    QComboBox* type_ = nullptr;
    QSpinBox* start_ = nullptr;
    std::array<QDoubleSpinBox*, 3> offset_{};
    QDoubleSpinBox* rotation_ = nullptr;
    std::array<QDoubleSpinBox*, 2> rotationPivot_{};
    QDoubleSpinBox* horizontalScale_ = nullptr;
    QDoubleSpinBox* verticalScale_ = nullptr;
    std::array<QDoubleSpinBox*, 2> scalePivot_{};
    QCheckBox* keepProportions_ = nullptr;
};
