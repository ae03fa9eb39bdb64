// A platform in memory whose calls end as the faults have it, and which keeps the ledger.
#pragma once

#include "support/scripted.h"
#include "sweep/faults.h"
#include "sweep/ledger.h"

namespace sweep {

class FaultyPlatform final : public scripted::Platform {
public:
    explicit FaultyPlatform(Faults &faults) : faults_(faults) {}

    Ledger ledger;

    stand_in::Ending before(stand_in::Seam seam, const char *call) override;
    void after() noexcept override { faults_.leave(); }
    void wrote(size_t offered, size_t taken, bool ok) override;
    void discarded(size_t bytes) override;
    void said(std::string_view bytes) override;

private:
    Faults &faults_;
};

} // namespace sweep
