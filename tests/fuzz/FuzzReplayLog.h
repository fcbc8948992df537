// The body of the processing-log reader's fuzz target, shared with the replay
// of its corpus in the app tests. Whatever the text, a log the reader accepts
// names a load, a size and logged modules, and every step it gives, read at
// the logged size, holds positions its rows' ranges allow. A broken promise traps.
#pragma once

#include "app/Replay_Log.h"

#include <string>
#include <string_view>

inline void Fuzz_ReplayLog(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    ReplayLog log;
    std::string error;
    if (!Replay_ReadLog(text, &log, &error)) {
        if (error.rfind("line ", 0) != 0) __builtin_trap();
        return;
    }
    if (log.loadLine < 1 || log.sizeLine <= log.loadLine || log.width < 1 || log.height < 1) __builtin_trap();
    for (const ReplayStep& step : log.steps) {
        if (!step.step.module || !step.step.module->logged || step.line <= log.loadLine) __builtin_trap();
        PipelineStep resolved;
        if (!Replay_ResolveStep(step, log.width, log.height, &resolved, &error)) continue;
        for (const ModuleParam& row : resolved.module->params) {
            const int32_t value = ModuleParams_Get(row, resolved.params.bytes);
            if (value == kParamLast && row.extent != ParamExtent::Fixed) continue;
            if (value < row.minimum || value > ModuleParams_Maximum(row, log.width, log.height))
                __builtin_trap();
        }
    }
}
