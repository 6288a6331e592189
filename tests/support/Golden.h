#pragma once

#include <cstdlib>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "zentavo/foundation/JSON.h"

namespace zentavo {

/// JSON with a line for each member, so that a difference can be reviewed.
inline void writeLines(std::ostream& out, const Value& value, const std::string& indent) {
    const std::string inner = indent + "  ";
    const char* separator = "\n";
    if (const Map* map = value.asMap(); map != nullptr && !map->empty()) {
        out << "{";
        for (const auto& [key, member] : *map) {
            out << separator << inner << json::write(Value(key)).value() << ": ";
            writeLines(out, member, inner);
            separator = ",\n";
        }
        out << "\n" << indent << "}";
    } else if (const List* list = value.asList(); list != nullptr && !list->empty()) {
        out << "[";
        for (const Value& element : *list) {
            out << separator << inner;
            writeLines(out, element, inner);
            separator = ",\n";
        }
        out << "\n" << indent << "]";
    } else {
        out << json::write(value).value();
    }
}

/// What goes over the wire, as files: a change of the wire is a change of these. To record them anew, run the test with
/// ZENTAVO_RECORD_GOLDEN=1 and review the difference.
inline void expectGolden(const std::string& name, const Map& actual) {
    const std::string path = std::string(ZENTAVO_GOLDEN_FOLDER "/") + name + ".json";
    if (std::getenv("ZENTAVO_RECORD_GOLDEN") != nullptr) {
        std::ofstream out(path);
        writeLines(out, actual, "");
        out << "\n";
    }
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    const auto expected = json::readMap(text.str());
    ASSERT_TRUE(expected) << path;
    EXPECT_EQ(*expected, actual) << json::write(actual).value();
}

} // namespace zentavo
