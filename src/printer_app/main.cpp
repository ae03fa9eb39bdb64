#include "host/terminal/output.h"
#include "printer_app/options/command_line.h"
#include "printer_app/server/service.h"

#include <exception>

int main(int count, char **words) {
    using host::ExitCode;
    host::holdStandardStreams();
    printer_app::Options options;
    const auto line = printer_app::declaredCommandLine(options, [&] { return printer_app::serve(options); });
    ExitCode code = line->parse(count, words);
    try {
        if (line->run() && code == ExitCode::Done) code = line->run()();
    } catch (const host::Failure &failure) {
        host::printFailure(failure.what());
        code = failure.code();
    } catch (const std::exception &error) {
        host::printFailure(error.what());
        code = ExitCode::Failed;
    }
    return static_cast<int>(host::afterOutput(code));
}
