// How the help looks.
#pragma once

#include <memory>

namespace CLI {
class FormatterBase;
}

namespace host {

/// Options with the name of their value alone; which exclude each other is said when they do.
std::shared_ptr<CLI::FormatterBase> helpFormat();

} // namespace host
