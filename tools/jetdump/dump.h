#pragma once

#include "jet/base/row_id.h"

/// What jetdump shows, on standard output.

/// The database as the engine sees it: tables with columns, indexes and rows, then relations. Throws jet::Error.
void DumpTables(const char* path, bool withRows, bool withSystemTables);

/// One line per page of the file: its type, and what it belongs to. Throws jet::Error when it cannot be read at all.
void ListPages(const char* path);

/// One page, as far as it can be made out; `withHex` adds its bytes. What is wrong with it stands where it was met.
/// False when something is. Throws jet::Error when the file has no such page.
bool DumpPage(const char* path, jet::PageNumber page, bool withHex);
