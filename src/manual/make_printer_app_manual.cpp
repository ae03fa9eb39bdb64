#include "manual/make_manual.h"
#include "printer_app/options/command_line.h"

int main(int count, char **words) {
    printer_app::Options options;
    return manual::makeManual(*printer_app::declaredCommandLine(options, {}), count, words);
}
