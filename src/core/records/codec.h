#pragma once

#include "base/bytes.h"
#include "base/json_style.h"
#include "base/result.h"

namespace tembrix {

// The JSON forms of the records. Defined for every record of this folder that has a JSON form, and
// for vectors of them where a document is an array. Encoding fails only on numbers that are not
// finite; decoding is strict. Errors: domain "json".
template <class Record>
Result<Bytes> encode(const Record& record, JsonStyle style = JsonStyle::compact);

template <class Record>
Result<Record> decode(BytesView json);

}  // namespace tembrix
