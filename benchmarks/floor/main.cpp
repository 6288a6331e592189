// The floor as a measured program: the same tasks as the SDK's, with nothing in between.

#include "floor/FloorClient.h"
#include "support/Subject.h"

int main(int argc, char** argv) { return bench::runSubject<bench::FloorClient>(argc, argv); }
