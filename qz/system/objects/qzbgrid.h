#pragma once

#include "qz/platform/stream.h"
#include "qz/system/objects/grid.h"

/// Grids as bytes: the geometry record of QZB streams, and the flat form that holds the values of one or several grids
/// of one shape. docs/grid-files.md has both byte by byte.
///
///     QZWriteOldStyleGrid(out, grids, 0);
///
///     QZMultiGrid<float> read;
///     if (!QZReadOldStyleGrid(in, read)) ...
///
/// One thread at a time for one stream.
namespace QZSystem {

/// Writes the item "QZGridBase": dimensions, centre, spacing, which of them are set, and the title, without values and
/// attached data. Always true; a failure shows in the stream.
bool QZBWriteGridBase(qzostream& out, const QZGridBase& grid);

/// Write the flat form. `tag` is a number of the caller's that readers pass over. False if the stream doesn't take all
/// bytes, and, with nothing written, for more than 1073741812 values, which the form can't count. Title and attached
/// data aren't part of it.
bool QZWriteOldStyleGrid(qzostream& out, const QZFixedGrid<float>& grid);
bool QZWriteOldStyleGrid(qzostream& out, const QZFixedMultiGrid<float>& grids, unsigned int tag);

/// Reads the flat form: sets number of grids, spacing, dimensions and centre, and then the values. False for a stream
/// that is cut short, or whose length field isn't that of its content; then `grids` has the geometry as far as it came,
/// and the values that came. What the setters refuse stays as it was, with their warnings.
///
/// Nothing but false comes of a header with more values than the bytes behind it make credible: a block of more than 16
/// times what the stream still holds plus 1 MiB, or 1024 more grids than it holds values. Where a stream doesn't know
/// what it holds, as a pipe, all of the values are read before the block is made. Throws std::bad_alloc.
[[nodiscard]] bool QZReadOldStyleGrid(qzistream& in, QZMultiGrid<float>& grids);

}  // namespace QZSystem
