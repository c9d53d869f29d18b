#include "vector/GR_DrawingObj.h"

namespace {

uint64_t g_revision = 0;

} // namespace

uint64_t GR_DrawingObj::NextStamp() {
    return ++g_revision;
}

GR_DrawingObj::GR_DrawingObj() : stamp_(NextStamp()) {}

void GR_DrawingObj::MarkChanged() {
    stamp_ = NextStamp();
    modified_ = true;
}

void GR_DrawingObj::RenewStamp() {
    stamp_ = NextStamp();
}
