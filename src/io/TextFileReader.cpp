#include "io/TextFileReader.h"

#include "io/TextDecoder.h"

namespace quillmark {

TextFileReader::Result TextFileReader::decode(std::string_view bytes)
{
    TextDecoder decoder;
    while (!decoder.take(bytes, TextDecoder::Behind::nothing)) {}
    return decoder.finish();
}

} // namespace quillmark
