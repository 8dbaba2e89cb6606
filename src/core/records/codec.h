#pragma once

#include "base/bytes.h"
#include "base/json_style.h"
#include "base/result.h"

namespace tembrix {

// The JSON encoding of the records. Defined for every record in this folder that has a JSON form,
// and for vectors of those that are stored as an array. Encoding fails only for numbers that are
// not finite. Decoding is strict. Errors: domain "json".
template <class Record>
Result<Bytes> encode(const Record& record, JsonStyle style = JsonStyle::compact);

template <class Record>
Result<Record> decode(BytesView json);

}  // namespace tembrix
