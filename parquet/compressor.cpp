#include "compressor.h"

#include <zstd.h>

#include <new>
#include <stdexcept>

namespace parquet {

Compressor::Compressor(int level) : level_(level), context_(ZSTD_createCCtx()) {
  if (!context_) throw std::bad_alloc();
}

Compressor::~Compressor() { ZSTD_freeCCtx(static_cast<ZSTD_CCtx*>(context_)); }

std::string_view Compressor::Compress(std::string_view bytes) {
  const std::size_t bound = ZSTD_compressBound(bytes.size());
  if (buffer_.size() < bound) buffer_.resize(bound);
  const std::size_t size = ZSTD_compressCCtx(static_cast<ZSTD_CCtx*>(context_), buffer_.data(),
                                             buffer_.size(), bytes.data(), bytes.size(), level_);
  if (ZSTD_isError(size)) throw std::runtime_error(std::string("zstd: ") + ZSTD_getErrorName(size));
  return {buffer_.data(), size};
}

std::string Decompress(std::string_view bytes, std::size_t size) {
  // Before memory is taken for what a damaged file only says.
  if (ZSTD_getFrameContentSize(bytes.data(), bytes.size()) != size)
    throw std::runtime_error("zstd: a page has not the size that is stated");
  std::string out(size, '\0');
  const std::size_t got = ZSTD_decompress(out.data(), size, bytes.data(), bytes.size());
  if (ZSTD_isError(got)) throw std::runtime_error(std::string("zstd: ") + ZSTD_getErrorName(got));
  return out;
}

}  // namespace parquet
