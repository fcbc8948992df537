// The wait cursor for the length of a scope: every long operation runs
// between Video_SetCursorWait and Video_SetCursorArrow, and a scope cannot
// forget the arrow on an early return.
#pragma once

class CursorWaitScope {
public:
    CursorWaitScope();
    ~CursorWaitScope();
    CursorWaitScope(const CursorWaitScope&) = delete;
    CursorWaitScope& operator=(const CursorWaitScope&) = delete;
};
