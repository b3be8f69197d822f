// For machines without zlib.
#include "failure.h"
#include "gzip.h"

namespace cli {

struct GzipText::State {};

GzipText::GzipText(TextSink) {
  throw Failure("view: this program was built without zlib, which packs the logs");
}

GzipText::~GzipText() = default;

void GzipText::Add(std::string_view) {}

void GzipText::Finish() {}

}  // namespace cli
