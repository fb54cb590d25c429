#include "helper/helper.h"

int main(int argc, char** argv) { return tandrel::runHelper({argv + 1, argv + argc}); }
