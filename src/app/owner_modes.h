#pragma once

#include "app/modes.h"

namespace tandrel {

// The command-line modes of the owner's side. Each takes all arguments after the program's name and
// returns the exit status.

// "state: ..." and with "run" as second argument "run: ..."
int runHelperCheck(const Arguments& arguments);
// Every condition and the next step; 0 when an assistant could work now. "--json" prints an object.
int runDoctor(const Arguments& arguments);
// The phone test in the terminal; 0 only when it passed. An argument names one of several phones.
int runPhoneTest(const Arguments& arguments);

// Adds Tandrel to the AI app named; without a name, how each app on this computer stands to it.
int runConnect(const Arguments& arguments);

}  // namespace tandrel
