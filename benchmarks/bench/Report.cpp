#include "bench/Report.h"

#include <cmath>
#include <cstdio>

namespace bench {

namespace {

std::string number(double value) {
    if (std::isnan(value)) {
        return "";
    }
    char text[32];
    std::snprintf(text, sizeof text, std::fabs(value) >= 100 ? "%.0f" : "%.2f", value);
    return text;
}

} // namespace

bool Report::met(double sdk, double floor, const Target& target) {
    switch (target.kind) {
    case Target::Kind::ratioAtMost:
        return sdk <= floor * target.limit;
    case Target::Kind::ratioAtLeast:
        return sdk >= floor * target.limit;
    case Target::Kind::valueAtMost:
        return sdk <= target.limit;
    case Target::Kind::differenceAtMost:
        return sdk - floor <= target.limit;
    case Target::Kind::none:
        break;
    }
    return true;
}

std::string Report::targetText(const Target& target, const std::string& unit) {
    switch (target.kind) {
    case Target::Kind::ratioAtMost:
        return "ratio <= " + number(target.limit);
    case Target::Kind::ratioAtLeast:
        return "ratio >= " + number(target.limit);
    case Target::Kind::valueAtMost:
        return "<= " + number(target.limit) + " " + unit;
    case Target::Kind::differenceAtMost:
        return "floor + " + number(target.limit) + " " + unit;
    case Target::Kind::none:
        break;
    }
    return "";
}

void Report::add(const std::string& name, const std::string& unit, double sdk, double floor, Target target) {
    const bool kept = met(sdk, floor, target);
    rows_.push_back({name, unit, sdk, floor, target, kept});
    missed_ += kept ? 0 : 1;
}

void Report::flush(const std::string& title) {
    json_ ? printJSON(title) : printTable(title);
    std::fflush(stdout);
    rows_.clear();
}

void Report::printTable(const std::string& title) const {
    std::printf("\n%s\n%-44s %-9s %12s %12s %7s  %-18s\n", title.c_str(), "", "unit", "SDK", "floor", "ratio",
                "target");
    for (const Row& row : rows_) {
        std::printf("%-44s %-9s %12s %12s %7s  %-18s %s\n", row.name.c_str(), row.unit.c_str(), number(row.sdk).c_str(),
                    number(row.floor).c_str(), number(row.sdk / row.floor).c_str(),
                    targetText(row.target, row.unit).c_str(),
                    row.target.kind == Target::Kind::none ? "" : (row.met ? "met" : "MISSED"));
    }
}

void Report::printJSON(const std::string& title) const {
    const auto orNull = [](double value) {
        char text[32];
        std::snprintf(text, sizeof text, "%.6g", value);
        return std::isfinite(value) ? std::string(text) : std::string("null");
    };
    for (const Row& row : rows_) {
        std::printf(R"({"bench":"%s","name":"%s","unit":"%s","sdk":%s,"floor":%s,"ratio":%s,"target":"%s","met":%s})"
                    "\n",
                    title.c_str(), row.name.c_str(), row.unit.c_str(), orNull(row.sdk).c_str(),
                    orNull(row.floor).c_str(), orNull(row.sdk / row.floor).c_str(),
                    targetText(row.target, row.unit).c_str(), row.met ? "true" : "false");
    }
}

} // namespace bench
