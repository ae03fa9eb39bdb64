// Who may see the page, and what becomes of its forms. The print system serves it; it checks none of what is checked here:
// from where somebody comes, under which name they think that they have reached us, and whether a form is one of ours.
#pragma once

#include "printer_app/server/service.h"

namespace printer_app {

void addPage(Service &service);

} // namespace printer_app
