#include "zentavo/inbox/DecodingDiagnostic.h"

#include "zentavo/foundation/Printable.h"

namespace zentavo {

std::string diagnostic(const DecodingFailure& failure) {
    const std::string description = printable(failure.message);
    const std::string subject = "'" + printable(failure.subject) + "'";
    const std::string path = "\ncodingPath: " + printable(failure.codingPath);
    switch (failure.kind) {
    case DecodingFailure::Kind::typeMismatch:
        return "Type " + subject + " mismatch: " + description + path;
    case DecodingFailure::Kind::keyNotFound:
        return "Key " + subject + " not found: " + description + path;
    case DecodingFailure::Kind::valueNotFound:
        return "Value " + subject + " not found: " + description + path;
    case DecodingFailure::Kind::dataCorrupted:
        break;
    }
    return description;
}

} // namespace zentavo
