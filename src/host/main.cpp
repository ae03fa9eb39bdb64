#include "host/commands/command_line.h"

int main(int count, char **words) { return host::runCommandLine(count, words); }
