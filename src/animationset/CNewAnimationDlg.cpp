#include "animationset/CNewAnimationDlg.h"

#include "core/UT_NameRules.h"

const char16_t* const CNewAnimationDlg::kInvalidNameMessage =
    u"A name cannot be longer than 260 characters or contain any of the following characters:\n"
    u"\\ / : * ? \" < > | .";

UT_WString CNewAnimationDlg::Accept() {
    name = UT_Trim(name);
    switch (UT_CheckName(name)) {
    case UT_NameProblem::kEmpty:
        return u"Enter an animation name.";
    case UT_NameProblem::kTooLong:
    case UT_NameProblem::kForbiddenCharacter:
        return kInvalidNameMessage;
    case UT_NameProblem::kNone:
        break;
    }
    if (location.empty() || !UT_FilePath::FromWide(location).IsFolder())
        return u"Cannot Access the Specified Project Path";
    if (Folder().Exists() == 0)
        return u"This project folder already exists; please choose another name.";
    return UT_WString();
}

UT_FilePath CNewAnimationDlg::Folder() const { return UT_FilePath::FromWide(location).Append(name); }
