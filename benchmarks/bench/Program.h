#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace bench {

/// What a measured program told, by name.
class Results {
public:
    void set(const std::string& name, double value) { values_[name] = value; }
    /// Ends the benchmark when the program did not tell it.
    double at(const std::string& name) const;

private:
    std::map<std::string, double> values_;
};

/// A program that stands beside this one.
class Program {
public:
    explicit Program(std::string name) : path_(folder() / name) {}

    /// Runs it to its end with `arguments` and its stores below `data`. Besides what it tells, the results hold
    /// "exec_at" (just before it was started) and "ended_at".
    Results run(const std::vector<std::string>& arguments, const std::filesystem::path& data) const;

    /// Where this very program lies.
    static std::filesystem::path folder();

private:
    const std::filesystem::path path_;
};

/// A new empty folder beside this program, gone with all it holds when the object goes.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const noexcept { return path_; }

private:
    std::filesystem::path path_;
};

} // namespace bench
