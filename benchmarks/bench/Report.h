#pragma once

#include <limits>
#include <string>
#include <vector>

namespace bench {

/// What a row must keep to.
struct Target {
    enum class Kind { none, ratioAtMost, ratioAtLeast, valueAtMost, differenceAtMost } kind = Kind::none;
    double limit = 0;
};
inline Target ratioAtMost(double limit) { return {Target::Kind::ratioAtMost, limit}; }
inline Target ratioAtLeast(double limit) { return {Target::Kind::ratioAtLeast, limit}; }
inline Target valueAtMost(double limit) { return {Target::Kind::valueAtMost, limit}; }
/// SDK minus floor.
inline Target differenceAtMost(double limit) { return {Target::Kind::differenceAtMost, limit}; }

inline constexpr double noFloor = std::numeric_limits<double>::quiet_NaN();

/// Collects measurements and prints them, as a table for people or as one JSON object a line.
class Report {
public:
    explicit Report(bool json) : json_(json) {}

    /// `floor` is the yardstick's value, where there is one.
    void add(const std::string& name, const std::string& unit, double sdk, double floor = noFloor, Target target = {});
    /// Prints what was added since the last `flush`, under `title`.
    void flush(const std::string& title);

    int missed() const noexcept { return missed_; }

private:
    struct Row {
        std::string name, unit;
        double sdk, floor;
        Target target;
        bool met;
    };
    static bool met(double sdk, double floor, const Target& target);
    static std::string targetText(const Target& target, const std::string& unit);

    void printTable(const std::string& title) const;
    void printJSON(const std::string& title) const;

    const bool json_;
    std::vector<Row> rows_;
    int missed_ = 0;
};

} // namespace bench
