#pragma once

#include <string>

#include "qz/dataflow.h"

namespace QZTools {

class CsvWriter;

/// The text of a value as a table shows it: numbers in the shortest form that reads back, base85 for a blob, JSON text
/// as it is, the display form for lists, ranges and records. "" for null and for no value.
std::string DisplayText(const QZDataFlow::QZRecord& record, const QZDataFlow::QZFieldBase& field);

/// Adds that text as a cell. REQUIRES: the field has a value in the record.
void WriteCell(const QZDataFlow::QZRecord& record, const QZDataFlow::QZFieldBase& field, CsvWriter& writer);

/// The shortest text that reads back to the number.
std::string NumberText(double value);

}  // namespace QZTools
