// A soak of the desktop program: random presses, drags, setter moves and
// characters on the main form and the AutoDev form, script after script, each
// from a seed of its own. The program must end every script with status 0
// (no crash, no hang, no box left unanswered, no line failing), and a Cancel
// must leave the working image as it was when the module was entered.
//
// The seed of the first script is printed; PELLUCIDA_SOAK_SEED sets it, so a
// failing script replays first. PELLUCIDA_SOAK_SECONDS sets how long new
// scripts are started (30 by default).
#include "AppRun.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

const std::string kSample = std::string(PELLUCIDA_TEST_SOURCE_DIR) + "/../samples/M94-Seestar-stack.tif";
constexpr int kSampleWidth = 960, kSampleHeight = 720;
constexpr int kStepsPerScript = 60;

uint64_t EnvNumber(const char* name, uint64_t fallback) {
    const char* text = std::getenv(name);
    return text && *text ? std::strtoull(text, nullptr, 10) : fallback;
}

// AutoDev's setters: identifier and largest position; the RoI corners (3 to 6)
// and the outside weight (2) depend on the RoI.
struct Setter {
    const char* id;
    int maximum;
};
constexpr Setter kSetters[] = {{"LvS1", 490},
                               {"LvS2", 100},
                               {"LvS3", kSampleWidth - 1},
                               {"LvS4", kSampleHeight - 1},
                               {"LvS5", kSampleWidth - 1},
                               {"LvS6", kSampleHeight - 1},
                               {"LvS7", 1000},
                               {"LvS8", 100}};
bool IsRoiCorner(const Setter& s) {
    return s.id[3] >= '3' && s.id[3] <= '6';
}

// A generated script with the pairs of saved images a Cancel must leave equal.
struct Script {
    std::string text;
    int steps = 0;
    std::vector<std::pair<std::string, std::string>> cancelChecks;
};

// Writes a script that only acts on widgets that exist and are enabled at that
// moment, from a model of the program's state. A line that acts on the
// program's widgets waits until no computation runs; characters do not, so
// they are what changes parameters and leaves a module while it computes.
class ScriptWriter {
public:
    ScriptWriter(uint64_t seed, const fs::path& folder) : m_rng(seed), m_folder(folder) {}

    Script Write() {
        Load();
        while (m_script.steps < kStepsPerScript) m_inModule ? ModuleStep() : MainStep();
        if (m_inModule) Leave(false, "press BtCl");
        // Only the main form's own buttons are pressed here, so a box or a module
        // form left on top fails the line.
        Line("idle");
        Line("press BtZ-");
        return std::move(m_script);
    }

private:
    enum class Roi { kWhole, kPartial, kUnknown };

    std::mt19937_64 m_rng;
    fs::path m_folder;
    Script m_script;
    bool m_undo = false;  // a step to undo exists
    // A global stretch was kept on this data (AutoDev then asks first), now and
    // in the undo step's state, which Undo swaps in.
    bool m_stretched = false, m_undoStretched = false;
    bool m_inModule = false;          // AutoDev's form is up
    bool m_result = false;            // AutoDev is known to have a result (Keep is enabled)
    Roi m_roi = Roi::kWhole;          // AutoDev keeps its RoI from one entry to the next
    const Setter* m_focus = nullptr;  // the last setter touched: characters may go to it
    std::string m_before;             // the image saved on entering
    int m_saves = 0;

    int Below(int n) { return int(m_rng() % uint64_t(n)); }
    int Between(int lo, int hi) { return lo + Below(hi - lo + 1); }
    bool Chance(int percent) { return Below(100) < percent; }

    void Line(const std::string& line) {
        m_script.text += line + "\n";
        ++m_script.steps;
    }
    // A line that acts on the program's widgets first waits until the newest
    // computation has ended: whatever it presses in a module, a result exists
    // (Keep and before/after are enabled), and from then on.
    void AppLine(const std::string& line) {
        Line(line);
        if (m_inModule) m_result = true;
    }

    // Opens the sample as linear data, from the main form.
    void Load() {
        Line("dialog " + kSample);
        Line("press BtOp");
        Line("expect-box Type of dataset?");
        Line("answer Linear");
    }

    std::string Save() {
        std::string name = "s";  // built up in steps: GCC 12 warns falsely on "s" + std::string
        name += std::to_string(++m_saves) + ".tif";
        const std::string path = (m_folder / name).string();
        Line("dialog " + path);
        AppLine("press BtSv");
        return path;
    }

    void MainStep() {
        const int roll = Below(10);
        if (roll < 3) {  // the module, most of the time
            m_before = Save();
            AppLine("press BtAD");
            if (m_stretched) {
                AppLine("expect-box Previously Stretched");
                AppLine(Chance(50) ? "answer Redo global stretch" : "answer Stretch the image as-is");
            }
            m_inModule = true;
            m_result = false;
            m_focus = nullptr;
        } else if (roll == 3) {
            AppLine(Chance(50) ? "press BtMH" : "press BtMV");
            m_undo = true;
            m_undoStretched = m_stretched;
        } else if (roll == 4) {
            if (m_undo) {
                AppLine("press BtUn");
                std::swap(m_stretched, m_undoStretched);
            }
        } else if (roll == 5) {
            // The screen stretch is for linear data only.
            static const char* kButtons[] = {"BtZ-", "BtZ+", "BtST"};
            AppLine(std::string("press ") + kButtons[Below(m_stretched ? 2 : 3)]);
        } else if (roll == 6) {
            AppLine(Drag("View"));
        } else if (roll == 7) {  // no quick key among them but undo's
            Chars("+-xz09u", Between(1, 4));
        } else if (roll == 8) {
            if (Chance(50)) {
                AppLine("press BtAb");
                AppLine("expect-box About Pellucida");
                AppLine("answer OK");
            } else {
                Load();
                m_undo = false;
                m_stretched = m_undoStretched = false;
            }
        } else {
            Line("idle");
        }
    }

    void ModuleStep() {
        const int roll = Below(14);
        if (roll < 2) {
            const Setter& s = PickSetter();
            AppLine(std::string("set ") + s.id + " " + std::to_string(Between(0, s.maximum)));
            if (IsRoiCorner(s)) m_roi = Roi::kUnknown;
        } else if (roll < 4) {  // a press or a drag on the setter's track; it takes the focus
            const Setter& s = PickSetter();
            AppLine(Chance(50) ? std::string("press ") + s.id : Drag(s.id, 4));
            if (IsRoiCorner(s)) m_roi = Roi::kUnknown;
            m_focus = &s;
        } else if (roll < 6) {  // a burst of changes while the computation runs
            Chars("+-", Between(1, 8));
            if (m_focus && IsRoiCorner(*m_focus)) m_roi = Roi::kUnknown;
        } else if (roll == 6) {
            AppLine(Drag("View"));
            m_roi = Roi::kPartial;
        } else if (roll == 7) {  // "No RoI" is enabled only with a RoI
            AppLine(m_roi == Roi::kPartial ? "press BtAl" : "press BtRs");
            m_roi = Roi::kWhole;
        } else if (roll == 8) {
            static const char* kButtons[] = {"BtZ-", "BtZ+", "BtOr"};
            AppLine(std::string("press ") + kButtons[Below(3)]);
        } else if (roll == 9) {
            AppLine("press BtI0");
            AppLine("answer OK");
        } else if (roll == 10) {
            Line("idle");
            m_result = true;
        } else if (roll == 11) {  // Cancel by its quick key, perhaps while computing
            if (m_focus && Chance(50)) Chars("+-", Between(1, 4));
            Leave(false, "char c");
        } else if (roll == 12) {
            Leave(true, m_result && Chance(50) ? "char k" : "press BtKp");
        } else {
            Leave(false, "press BtCl");
        }
    }

    // Only setters that are enabled: the outside weight only with a RoI.
    const Setter& PickSetter() {
        while (true) {
            const Setter& s = kSetters[Below(int(std::size(kSetters)))];
            if (std::string(s.id) != "LvS2" || m_roi == Roi::kPartial) return s;
        }
    }

    // A drag inside the widget's top-left corner, so it starts and ends on it.
    std::string Drag(const char* id, int height = 150) {
        const int x0 = Between(2, 60), x1 = Between(2, 60);
        const int y0 = Between(2, height), y1 = Between(2, height);
        return std::string("drag ") + id + " " + std::to_string(x0) + " " + std::to_string(y0) + " " +
               std::to_string(x1 == x0 ? x1 + 5 : x1) + " " + std::to_string(y1 == y0 ? y1 + 5 : y1);
    }

    void Chars(const char* set, int count) {
        const std::string chars = set;
        for (int i = 0; i < count; ++i) {
            const char c = chars[size_t(Below(int(chars.size())))];
            // Characters go to the focus or to a quick key, never to a widget
            // chosen by name: no settling, so they do not make a result certain.
            Line(std::string("char ") + c);
            if (c == 'u' && !m_inModule && m_undo)
                std::swap(m_stretched, m_undoStretched);  // Undo's quick key
        }
    }

    void Leave(bool keep, const std::string& line) {
        Line(line);
        m_inModule = false;
        m_focus = nullptr;
        if (keep) {
            m_undo = true;
            m_undoStretched = m_stretched;
            m_stretched = true;
            return;
        }
        m_script.cancelChecks.emplace_back(m_before, Save());
    }
};

}  // namespace

TEST(Soak, RandomUseNeverCrashesHangsOrChangesTheImageOnCancel) {
    const uint64_t firstSeed = EnvNumber("PELLUCIDA_SOAK_SEED", 20261124);
    const auto budget = std::chrono::seconds(EnvNumber("PELLUCIDA_SOAK_SECONDS", 30));
    std::printf("soak: first seed %llu (PELLUCIDA_SOAK_SEED), %lld s (PELLUCIDA_SOAK_SECONDS)\n",
                static_cast<unsigned long long>(firstSeed), static_cast<long long>(budget.count()));
    TempDir dir;
    const auto start = std::chrono::steady_clock::now();
    int scripts = 0, steps = 0, cancels = 0, failures = 0;
    for (uint64_t seed = firstSeed;
         failures < 3 && (scripts == 0 || std::chrono::steady_clock::now() - start < budget); ++seed) {
        const fs::path folder = dir.Path() / std::to_string(seed);
        fs::create_directories(folder);
        const Script script = ScriptWriter(seed, folder).Write();
        const ProgramRun run = RunProgram(folder, script.text);
        ++scripts;
        steps += script.steps;
        bool failed = run.status != 0;
        EXPECT_EQ(run.status, 0) << "seed " << seed << " (status 124: a hang; 66: a ThreadSanitizer report)\n"
                                 << run.err << "script:\n"
                                 << script.text;
        for (const auto& [before, after] : script.cancelChecks) {
            ++cancels;
            if (run.status != 0) break;
            const bool same = ReadFileBytes(before) == ReadFileBytes(after);
            EXPECT_TRUE(same) << "seed " << seed << ": Cancel changed the image (" << before << ", " << after
                              << ")\nscript:\n"
                              << script.text;
            failed = failed || !same;
        }
        failures += failed;
        if (!failed) fs::remove_all(folder);
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("soak: %d scripts, %d steps, %d Cancel checks, %d failing, %.0f s\n", scripts, steps, cancels,
                failures, seconds);
}
