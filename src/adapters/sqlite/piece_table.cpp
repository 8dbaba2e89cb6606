#include "adapters/sqlite/piece_table.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>

namespace tembrix::sqlite {

namespace {

// The key of a row consists of the owner and, in the lower bits, of the place.
constexpr int placeBits = 43;
constexpr std::int64_t places = std::int64_t{1} << placeBits;
// The distance between places at the end of a value.
constexpr std::int64_t stride = std::int64_t{1} << 24;

std::int64_t keyOf(std::int64_t owner, std::int64_t place) {
    return (owner << placeBits) | place;
}

constexpr std::size_t valuesKnown = 2;
constexpr int noRoom = -1;  // SQLite's own codes are not negative

// The distance between `count` new places between two others; 0 if there is not enough room.
std::int64_t spacingBetween(std::int64_t low, std::int64_t high, std::int64_t count) {
    const std::int64_t gap = high - low;
    // Most insertions follow the previous one at the end of a line, so they start near the lower
    // place.
    const std::int64_t near = std::min(stride, gap / 64);
    return near > 0 && near <= (gap - 1) / count ? near : gap / (count + 1);
}

// Indices into `sequence` of one of its longest ascending subsequences.
std::vector<std::size_t> longestAscending(const std::vector<std::size_t>& sequence) {
    std::vector<std::size_t> ends;  // by length: the index of the smallest last element
    std::vector<std::size_t> before(sequence.size());
    for (std::size_t i = 0; i < sequence.size(); ++i) {
        const auto at =
            std::lower_bound(ends.begin(), ends.end(), sequence[i],
                             [&](std::size_t end, std::size_t v) { return sequence[end] < v; });
        before[i] = at == ends.begin() ? i : *std::prev(at);
        if (at == ends.end())
            ends.push_back(i);
        else
            *at = i;
    }
    std::vector<std::size_t> result(ends.size());
    for (std::size_t i = ends.size(), next = ends.empty() ? 0 : ends.back(); i-- > 0;) {
        result[i] = next;
        next = before[next];
    }
    return result;
}

}  // namespace

Bytes PieceHeader::encoded() const {
    Bytes bytes;
    for (const std::uint64_t number : {static_cast<std::uint64_t>(owner), count, size, sum})
        for (int shift = 0; shift < 64; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(number >> shift));
    return bytes;
}

std::optional<PieceHeader> PieceHeader::decode(BytesView bytes) {
    if (bytes.size() != 32)
        return std::nullopt;
    std::uint64_t numbers[4] = {};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        numbers[i / 8] |= std::uint64_t{bytes[i]} << (8 * (i % 8));
    return PieceHeader{static_cast<std::int64_t>(numbers[0]), numbers[1], numbers[2], numbers[3]};
}

PieceTable::PieceTable(const Database& database)
    : insert_(database, "REPLACE INTO piece(id, hash, data) VALUES(?1, ?2, ?3)"),
      delete_(database, "DELETE FROM piece WHERE id = ?1"),
      deleteAll_(database, "DELETE FROM piece WHERE id BETWEEN ?1 AND ?2"),
      list_(database,
            "SELECT id, hash, length(data) FROM piece WHERE id BETWEEN ?1 AND ?2 ORDER BY id"),
      all_(database, "SELECT data FROM piece WHERE id BETWEEN ?1 AND ?2 ORDER BY id"),
      last_(database, "SELECT max(id) FROM piece") {}

void PieceTable::bindOwner(Statement& statement, std::int64_t owner) {
    statement.bind(1, keyOf(owner, 0));
    statement.bind(2, keyOf(owner, places - 1));
}

bool PieceTable::Row::holds(const std::shared_ptr<const ValuePiece>& other) const {
    return piece == other || (hash == other->hash && size == other->bytes.size());
}

int PieceTable::read(const PieceHeader& header, Bytes& value) {
    PieceHeader found{header.owner, 0, 0, 0};
    value.reserve(value.size() + std::min<std::uint64_t>(header.size, 1u << 30));
    bindOwner(all_, header.owner);
    int code = all_.step();
    for (; code == SQLITE_ROW; code = all_.step()) {
        const auto bytes = all_.bytes(0);
        ++found.count;
        found.size += bytes.size();
        found.sum += contentHash(bytes);
        if (found.size > header.size)
            break;
        value.insert(value.end(), bytes.begin(), bytes.end());
    }
    all_.reset();
    if (code == SQLITE_ROW || code == SQLITE_DONE)
        return found == header ? SQLITE_DONE : SQLITE_CORRUPT;
    return code;
}

int PieceTable::load(const PieceHeader& header, Rows& rows) {
    bindOwner(list_, header.owner);
    int code = list_.step();
    PieceHeader found{header.owner, 0, 0, 0};
    for (; code == SQLITE_ROW; code = list_.step()) {
        rows.push_back({list_.integer(0) % places, static_cast<std::uint64_t>(list_.integer(1)),
                        static_cast<std::uint64_t>(list_.integer(2)), nullptr});
        ++found.count;
        found.size += rows.back().size;
        found.sum += rows.back().hash;
    }
    list_.reset();
    if (code == SQLITE_DONE && found != header)
        rows.clear();  // damaged, so that all rows are written again
    return code;
}

int PieceTable::erase(const PieceHeader& header) {
    bindOwner(deleteAll_, header.owner);
    const int code = deleteAll_.step();
    deleteAll_.reset();
    known_.remove_if([&](const Known& known) { return known.header.owner == header.owner; });
    return code;
}

int PieceTable::write(PieceHeader& header, const ValuePieces& pieces) {
    auto known = std::find_if(known_.begin(), known_.end(),
                              [&](const Known& one) { return one.header == header; });
    Known value;
    if (known != known_.end()) {
        value = std::move(*known);
        known_.erase(known);
    } else {
        value.header = header;
        if (const int code = header.owner == 0 ? SQLITE_DONE : load(header, value.rows);
            code != SQLITE_DONE)
            return code;
    }
    owner_ = header.owner;
    int code = value.rows.empty() ? noRoom : writeChanged(value.rows, pieces);
    if (code == noRoom) {
        value.rows.clear();
        code = writeAll(header, pieces, value.rows);
    }
    if (code != SQLITE_DONE)
        return code;
    header.owner = owner_;
    header.count = value.rows.size();
    header.size = header.sum = 0;
    for (const auto& row : value.rows) {
        header.size += row.size;
        header.sum += row.hash;
    }
    value.header = header;
    known_.push_front(std::move(value));
    if (known_.size() > valuesKnown)
        known_.pop_back();
    return SQLITE_DONE;
}

int PieceTable::writeAll(PieceHeader& header, const ValuePieces& pieces, Rows& rows) {
    if (header.owner != 0) {
        if (const int code = erase(header); code != SQLITE_DONE)
            return code;
    } else {
        const int code = last_.step();
        owner_ = (last_.integer(0) >> placeBits) + 1;  // NULL is read as 0
        last_.reset();
        if (code != SQLITE_ROW)
            return code;
    }
    rows.reserve(pieces.size());
    const auto count = static_cast<std::int64_t>(pieces.size());
    const std::int64_t spacing = std::min(stride, places / (count + 1));
    std::int64_t place = places / 2 - spacing * (count / 2);
    for (const auto& piece : pieces) {
        if (const int code = put(place, piece, rows); code != SQLITE_DONE)
            return code;
        place += spacing;
    }
    return SQLITE_DONE;
}

// Keeps rows whose bytes are among the new pieces in the same order, and replaces the rows between
// them. Returns noRoom if there are no free place numbers.
int PieceTable::writeChanged(Rows& rows, const ValuePieces& pieces) {
    std::size_t same = 0;
    while (same < rows.size() && same < pieces.size() && rows[same].holds(pieces[same])) {
        if (rows[same].piece != pieces[same])
            rows[same].piece = pieces[same];
        ++same;
    }
    std::size_t rowEnd = rows.size();
    std::size_t pieceEnd = pieces.size();
    while (rowEnd > same && pieceEnd > same && rows[rowEnd - 1].holds(pieces[pieceEnd - 1])) {
        --rowEnd;
        --pieceEnd;
        if (rows[rowEnd].piece != pieces[pieceEnd])
            rows[rowEnd].piece = pieces[pieceEnd];
    }
    std::unordered_map<std::uint64_t, std::size_t> rowByHash;
    for (std::size_t i = same; i < rowEnd; ++i)
        rowByHash.emplace(rows[i].hash, i);
    std::vector<std::size_t> movedRows;
    std::vector<std::size_t> movedPieces;
    for (std::size_t i = same; i < pieceEnd; ++i) {
        const auto found = rowByHash.find(pieces[i]->hash);
        if (found != rowByHash.end() && rows[found->second].holds(pieces[i])) {
            movedRows.push_back(found->second);
            movedPieces.push_back(i);
        }
    }
    Rows middle;
    std::size_t row = same;
    std::size_t piece = same;
    for (const std::size_t kept : longestAscending(movedRows)) {
        const std::size_t keptRow = movedRows[kept];
        const std::size_t keptPiece = movedPieces[kept];
        if (const int code = replaceGap(rows, row, keptRow, pieces, piece, keptPiece,
                                        rows[keptRow].place, middle);
            code != SQLITE_DONE)
            return code;
        middle.push_back(rows[keptRow]);
        middle.back().piece = pieces[keptPiece];
        row = keptRow + 1;
        piece = keptPiece + 1;
    }
    const auto high =
        rowEnd < rows.size() ? std::optional(rows[rowEnd].place) : std::optional<std::int64_t>();
    if (const int code = replaceGap(rows, row, rowEnd, pieces, piece, pieceEnd, high, middle);
        code != SQLITE_DONE)
        return code;
    const auto at = rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(same),
                               rows.begin() + static_cast<std::ptrdiff_t>(rowEnd));
    rows.insert(at, std::make_move_iterator(middle.begin()), std::make_move_iterator(middle.end()));
    return SQLITE_DONE;
}

int PieceTable::replaceGap(const Rows& rows, std::size_t from, std::size_t to,
                           const ValuePieces& pieces, std::size_t first, std::size_t last,
                           std::optional<std::int64_t> high, Rows& result) {
    const std::size_t reused = std::min(to - from, last - first);
    for (std::size_t i = 0; i < reused; ++i)
        if (const int code = put(rows[from + i].place, pieces[first + i], result);
            code != SQLITE_DONE)
            return code;
    for (std::size_t i = from + reused; i < to; ++i)
        if (const int code = drop(rows[i].place); code != SQLITE_DONE)
            return code;
    const auto rest = static_cast<std::int64_t>(last - first - reused);
    if (rest == 0)
        return SQLITE_DONE;
    std::int64_t spacing = stride;
    std::int64_t place = 0;
    if (from + reused > 0) {
        place = rows[from + reused - 1].place;
        if (high)
            spacing = spacingBetween(place, *high, rest);
    } else if (high) {
        place = *high - stride * (rest + 1);
    }
    if (spacing == 0 || place < 0 || rest >= (places - place) / spacing)
        return noRoom;
    for (std::size_t i = first + reused; i < last; ++i) {
        place += spacing;
        if (const int code = put(place, pieces[i], result); code != SQLITE_DONE)
            return code;
    }
    return SQLITE_DONE;
}

int PieceTable::put(std::int64_t place, const std::shared_ptr<const ValuePiece>& piece,
                    Rows& result) {
    insert_.bind(1, keyOf(owner_, place));
    insert_.bind(2, static_cast<std::int64_t>(piece->hash));
    insert_.bind(3, BytesView(piece->bytes));
    const int code = insert_.step();
    insert_.reset();
    result.push_back({place, piece->hash, piece->bytes.size(), piece});
    return code;
}

int PieceTable::drop(std::int64_t place) {
    delete_.bind(1, keyOf(owner_, place));
    const int code = delete_.step();
    delete_.reset();
    return code;
}

}  // namespace tembrix::sqlite
