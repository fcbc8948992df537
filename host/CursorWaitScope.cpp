#include "host/CursorWaitScope.h"

#include "host/Host.h"

CursorWaitScope::CursorWaitScope() {
    Host_Call("video", "Video_SetCursorWait", nullptr);
}

CursorWaitScope::~CursorWaitScope() {
    Host_Call("video", "Video_SetCursorArrow", nullptr);
}
