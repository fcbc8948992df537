// Win32 backend, file dialogs: the wide-character common dialogs, so that
// paths in any language survive (the result is UTF-8), with OFN_NOCHANGEDIR
// so that choosing a file does not move the program's working folder. The
// open dialog wants an existing file; the save dialog asks nothing, not even
// before replacing a file (the program asks itself).
#include "host/win32/Win32_Private.h"

#include <commdlg.h>

#include <vector>

namespace {

constexpr size_t kNameChars = 4096;  // the buffer; a proposed name is cut to 4095

}  // namespace

bool Win32_FileDialog(bool save, const std::string& current, std::string* chosen) {
    std::vector<wchar_t> name(kNameChars, L'\0');
    const std::wstring proposed = Win32_Wide(current);
    proposed.copy(name.data(), kNameChars - 1);

    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = Win32_State().window;
    dialog.lpstrFilter = L"All Files\0*.*\0";
    dialog.lpstrFile = name.data();
    dialog.nMaxFile = DWORD(kNameChars);
    dialog.Flags = OFN_NOCHANGEDIR | (save ? 0 : OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST);
    const BOOL ok = save ? GetSaveFileNameW(&dialog) : GetOpenFileNameW(&dialog);
    if (!ok) return false;
    *chosen = Win32_Utf8(name.data());
    return true;
}
