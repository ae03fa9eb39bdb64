#include "host/commands/command_line.h"
#include "manual/make_manual.h"

int main(int count, char **words) { return manual::makeManual(*host::declaredCommandLine(), count, words); }
