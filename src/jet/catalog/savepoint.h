#pragma once

#include "jet/catalog/catalog.h"

namespace jet {

/// Around one statement, or one change of a record: unless Release() is called, its end takes everything back that was
/// changed since its beginning, pages and what is known of them. There is one at a time.
class Savepoint {
public:
    /// Throws what the pager failed with.
    explicit Savepoint(Catalog& catalog) : catalog_(&catalog) { catalog.GetPager().SetSavepoint(); }
    ~Savepoint()
    {
        if (catalog_ != nullptr)
            catalog_->RollBack();
    }
    Savepoint(const Savepoint&) = delete;
    Savepoint& operator=(const Savepoint&) = delete;

    void Release() noexcept
    {
        catalog_->GetPager().ReleaseSavepoint();
        catalog_ = nullptr;
    }

private:
    Catalog* catalog_;
};

} // namespace jet
