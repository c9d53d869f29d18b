#include "core/DB_Exception.h"

DB_Exception::DB_Exception(UT_WString message) : message_(std::move(message)), narrow_(UT_ToUtf8(message_)) {}
