// The SDK as a measured program.

#include "sdk/SdkClient.h"
#include "support/Subject.h"

int main(int argc, char** argv) { bench::Subject<bench::SdkClient>(bench::Job::fromArguments(argc, argv)).run(); }
