#include "run/run.h"

int main(int argc, char** argv) { return ugf::run_converter(argc, argv); }
