// --to parquet: a folder of tables for engines that read columns. docs/export.md, Parquet.
#pragma once

#include "exporter.h"

namespace exporters {

std::unique_ptr<Exporter> MakeParquet(Files& files);

}  // namespace exporters
