// The SDK as a measured program.

#include "sdk/SdkClient.h"
#include "support/Subject.h"

int main(int argc, char** argv) { return bench::runSubject<bench::SdkClient>(argc, argv); }
