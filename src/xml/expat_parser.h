#pragma once

#include "xml/input_encoding.h"

#include <exception>
#include <memory>
#include <new>
#include <utility>

#include <expat.h>

namespace velmora {

/// One of the library's parsers, which is C, for handlers that may throw.
class ExpatParser {
public:
    explicit ExpatParser(ParseAs parseAs) : encoding_(EncodingName(parseAs)), parser_(XML_ParserCreate(encoding_))
    {
        if (!parser_)
            throw std::bad_alloc();
    }

    [[nodiscard]] XML_Parser Get() const noexcept { return parser_.get(); }
    /// Begins anew, without handlers.
    void Reset() noexcept { XML_ParserReset(parser_.get(), encoding_); }

    /// Runs `step`; what it throws ends the parse and is kept until the parser has returned.
    template <class Step>
    void Guard(Step&& step) noexcept
    {
        if (failure_)
            return; // the parser may still report what it has at hand
        try {
            step();
        } catch (...) {
            failure_ = std::current_exception();
            XML_StopParser(parser_.get(), XML_FALSE);
        }
    }
    /// Throws what a step has thrown, if any did.
    void Rethrow()
    {
        if (failure_)
            std::rethrow_exception(std::exchange(failure_, nullptr));
    }

private:
    [[nodiscard]] static const char* EncodingName(ParseAs parseAs) noexcept
    {
        if (parseAs == ParseAs::Declared)
            return nullptr;
        return parseAs == ParseAs::Utf8 ? "UTF-8" : "ISO-8859-1";
    }

    struct Deleter {
        void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
    };

    const char* encoding_;
    std::unique_ptr<XML_ParserStruct, Deleter> parser_;
    std::exception_ptr failure_;
};

} // namespace velmora
