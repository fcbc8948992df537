// Files the tests read, write and throw away, and the environment variables
// that point the program at them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#ifndef _WIN32
#include <unistd.h>
#endif

inline std::vector<uint8_t> ReadFileBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

inline void WriteFileBytes(const std::filesystem::path& path, const std::vector<uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

// The file name of a test program or tool built beside the tests.
inline std::string ExecutableName(const std::string& name) {
#ifdef _WIN32
    return name + ".exe";
#else
    return name;
#endif
}

// Whether a file can be created in `dir` (the permission bits alone do not
// tell on every system).
inline bool IsWritableDir(const std::filesystem::path& dir) {
    const std::filesystem::path probe = dir / ".pellucida-write-probe";
    const bool ok = std::ofstream(probe).good();
    std::error_code ignored;
    std::filesystem::remove(probe, ignored);
    return ok;
}

inline void SetEnv(const char* name, const std::string& value) {
#ifdef _WIN32
    _putenv_s(name, value.c_str());
#else
    setenv(name, value.c_str(), 1);
#endif
}

inline void UnsetEnv(const char* name) {
#ifdef _WIN32
    _putenv_s(name, "");
#else
    unsetenv(name);
#endif
}

// Sets an environment variable for the life of the object, then puts back
// what was there (PATH must come back).
class EnvScope {
public:
    EnvScope(const char* name, const std::string& value) : m_name(name) {
        if (const char* old = std::getenv(name)) m_old = old;
        SetEnv(name, value);
    }
    ~EnvScope() { m_old ? SetEnv(m_name, *m_old) : UnsetEnv(m_name); }
    EnvScope(const EnvScope&) = delete;
    EnvScope& operator=(const EnvScope&) = delete;

private:
    const char* m_name;
    std::optional<std::string> m_old;
};

// An empty folder of the running test's own, removed with everything in it at
// the end: test programs run in parallel under ctest, so the name carries the
// test and the process.
class TempDir {
public:
    TempDir() {
        const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
        std::string name = "pellucida";
        if (info) name += std::string("_") + info->test_suite_name() + "_" + info->name();
#ifndef _WIN32
        name.append("_").append(std::to_string(getpid()));
#endif
        std::replace(name.begin(), name.end(), '/', '_');  // parameterised names
        m_path = std::filesystem::temp_directory_path() / name;
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directories(m_path);
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& Path() const {
        return m_path;
    }
    std::string File(const std::string& name) const {
        return (m_path / name).string();
    }
    size_t Count() const {
        return size_t(std::distance(std::filesystem::directory_iterator(m_path), {}));
    }

private:
    std::filesystem::path m_path;
};
