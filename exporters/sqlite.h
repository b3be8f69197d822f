// A database of SQLite. docs/export.md, SQLite, has its schema.
#pragma once

#include "exporter.h"

namespace exporters {

std::unique_ptr<Exporter> MakeSqlite(Files& files);

}  // namespace exporters
