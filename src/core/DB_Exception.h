#pragma once

#include "core/UT_String.h"

#include <exception>
#include <string>

// The one failure type of the persistence layer. It carries a wide message for the user.
class DB_Exception : public std::exception {
public:
    explicit DB_Exception(UT_WString message);
    const UT_WString& Message() const noexcept { return message_; }
    const char* what() const noexcept override { return narrow_.c_str(); }

private:
    UT_WString message_;
    std::string narrow_;
};

// Raised when memory for data read from a stream cannot be had.
class DB_OutOfMemory : public DB_Exception {
public:
    DB_OutOfMemory() : DB_Exception(u"bad allocation") {}
};
