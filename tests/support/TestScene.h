// A stretched deep-sky picture made up for the tests that show one: a tilted
// spiral galaxy (a warm core, blue arms, a dust lane) among coloured stars on
// a dark, slightly noisy sky, at 30 bits. Ours, so that its pictures can be
// kept as reviewed images.
#pragma once

#include "support/TestImages.h"

#include <algorithm>
#include <cmath>

inline ImagePtr TestScene(int32_t w, int32_t h) {
    const double size = 0.6 * std::min(w, h), tilt = -0.45, squash = 0.42;
    const double tints[4][3] = {{1.0, 0.85, 0.62}, {0.55, 0.72, 1.0}, {1.0, 0.95, 0.9}, {0.75, 0.85, 1.0}};
    return MakeImage(w, h, 30, [&](int32_t x, int32_t y, int c) {
        const double dx = x - 0.5 * w, dy = y - 0.5 * h;
        const double u = (dx * std::cos(tilt) + dy * std::sin(tilt)) / size;
        const double v = (-dx * std::sin(tilt) + dy * std::cos(tilt)) / size / squash;
        const double r = std::hypot(u, v), angle = std::atan2(v, u);
        const double core = std::exp(-r * r / 0.006), disc = std::exp(-r / 0.28);
        const double spiral = std::cos(2 * (angle - std::log(std::max(r, 0.05) / 0.1) / 0.45));
        const double arms =
            std::pow(std::max(0.0, spiral), 3) * std::exp(-r / 0.45) * (1 - std::exp(-r * r / 0.02));
        const double lane = 1 - 0.55 * std::exp(-std::pow((v * squash + 0.035) / 0.02, 2)) * disc;
        double value =
            0.045 + 0.012 * c * (1 - c / 2.0) +
            lane * (0.9 * core * tints[0][c] + 0.5 * disc * tints[2][c] + 0.75 * arms * tints[1][c]);
        for (int s = 0; s < 110; ++s) {
            const double sx = double(TestHash(uint64_t(s) * 2 + 11) % uint64_t(w));
            const double sy = double(TestHash(uint64_t(s) * 2 + 12) % uint64_t(h));
            const double peak = s < 12 ? 1.5 : 0.9 / (1 + s % 7), width = s < 12 ? 3.5 : 1.5;
            value += peak * tints[s % 4][c] * std::exp(-((x - sx) * (x - sx) + (y - sy) * (y - sy)) / width);
        }
        value += double(TestHash(uint64_t(y) * 7919 + uint64_t(x) * 3 + uint64_t(c)) % 1000) * 2e-5;
        return int64_t(std::clamp(value, 0.0, 1.0) * 1073741823.0);
    });
}
