// Code that our own warnings would refuse: it compiles only while they stay with us.
#include <zentavo/foundation/Value.h>

int truncated(double value);

int truncated(double value) {
    int result = (int)value;
    for (int value = 0; value < 1; ++value) {
        result += value;
    }
    return result;
}
