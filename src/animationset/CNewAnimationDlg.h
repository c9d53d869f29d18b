#pragma once

#include "core/UT_FilePath.h"
#include "core/UT_String.h"

// The rules of the "New Animation Set" and "Save As" dialog: a name and a location.
// The window that shows it belongs to the host; it calls Accept on OK and keeps the
// dialog open, with the name selected, while Accept gives a message.
class CNewAnimationDlg {
public:
    CNewAnimationDlg(UT_WString title, UT_WString name, UT_WString location)
        : title(std::move(title)), name(std::move(name)), location(std::move(location)) {}

    // Trims the name, then checks name and location. Returns the message to show, or an
    // empty string when the dialog may close.
    UT_WString Accept();
    // Location + name, valid after Accept succeeded.
    UT_FilePath Folder() const;

    static const char16_t* const kInvalidNameMessage;

    UT_WString title;
    UT_WString name;
    UT_WString location;
};
