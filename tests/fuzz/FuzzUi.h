// The bodies of the toolkit readers' fuzz targets (archive, .sqi icons,
// markup), shared with the replay of their corpora in the ui tests so that
// both run exactly the same steps. A broken promise traps.
#pragma once

#include "FuzzCheck.h"
#include "ui/Entities.h"
#include "ui/Layout.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Create.h"
#include "ui/Widget.h"
#include "ui/archive/Resources_Archive.h"
#include "ui/archive/Sqi_Decode.h"
#include "ui/markup/Markup_Form.h"

#include <string>
#include <vector>

// The input written to a file and opened as a volume; every record the slot
// walk reaches is looked up by name and read, in pieces and whole.
inline void Fuzz_Archive(const uint8_t* data, size_t size) {
    static const std::string path = Fuzz_TempFolder("archive") + "/volume";
    if (!Fuzz_WriteFile(path, data, size)) return;
    ResourceArchive archive;
    if (ResourceArchive_AddVolume(&archive, path.c_str()) != kResourceOk) return;
    std::vector<ResourceRecordInfo> records;
    ResourceArchive_ListRecords(&archive, &records);
    records.push_back({});
    records.back().name = "missing.xml";
    for (const ResourceRecordInfo& record : records) {
        ResourceEntry* entry = nullptr;
        if (ResourceArchive_OpenEntry(&archive, record.name.c_str(), kResourceModeRead, &entry) !=
            kResourceOk)
            continue;
        uint8_t buffer[64];
        ResourceEntry_Read(&archive, entry, buffer, sizeof buffer);
        ResourceEntry_Seek(&archive, entry, -8, 2);
        ResourceEntry_Read(&archive, entry, buffer, sizeof buffer);
        ResourceEntry_Read(&archive, entry, nullptr, 4);
        if (entry->position > entry->dataLength) __builtin_trap();
        ResourceEntry_Close(&archive, entry);
        // Nothing read whole can be larger than the file it came from.
        if (ResourceArchive_LoadWhole(&archive, record.name.c_str()).size() > size) __builtin_trap();
    }
    if (!archive.entries.empty()) __builtin_trap();
}

// The first six bytes choose the widget's place and size (it may hang over
// every edge of the framebuffer), fill mode and tints; the rest is the icon.
inline void Fuzz_Sqi(const uint8_t* data, size_t size) {
    if (size < 6) return;
    constexpr uint32_t kCanvas = 96;
    std::vector<uint32_t> pixels(kCanvas * kCanvas, 0x00123456);
    SqiTarget t;
    t.x = static_cast<int32_t>(data[0] % 128) - 16;
    t.y = static_cast<int32_t>(data[1] % 128) - 16;
    t.width = data[2] % 160;
    t.height = data[3] % 160;
    t.fillMode = data[4] % 4;
    t.tint[0] = static_cast<uint16_t>(data[5] * 257);
    t.tint[1] = static_cast<uint16_t>(~data[5] * 131);
    t.tint[2] = 0xFFFF;
    t.pixels = pixels.data();
    t.pixelsPerRow = t.framebufferWidth = t.framebufferHeight = kCanvas;
    Sqi_Draw(data + 6, size - 6, t);
}

// The input read as a form twice (the second time with whatever entities the
// first defined), laid out again for another screen, and searched. Unbalanced
// input prints its message on standard output: run the fuzzer with
// -close_fd_mask=1 to keep its log readable.
inline void Fuzz_Markup(const uint8_t* data, size_t size) {
    auto toolkit = Toolkit_CreateBare();
    Toolkit_SetScreen(toolkit.get(), 800, 480, 800, nullptr);
    Toolkit_SetMetricsFromScreen(toolkit.get());
    Widget* first = Form_LoadText(toolkit.get(), "fuzz.xml", data, size, nullptr);
    Form_LoadText(toolkit.get(), "fuzz.xml", data, size, first);
    Toolkit_SetScreen(toolkit.get(), 333, 777, 336, nullptr);
    Layout_Apply(toolkit.get(), toolkit->root.get());
    Widget_FindById(toolkit->root.get(), Widget_PackId("LvS0"));
}
