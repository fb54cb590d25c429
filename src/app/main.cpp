#include "app/modes.h"

int main(int argc, char** argv) { return tandrel::runProgram({argv + 1, argv + argc}); }
