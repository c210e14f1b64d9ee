// Teaches the binary format a class, writes objects with it, and reads them with and without knowing the class.
#include <qz/system.h>

using namespace QZSystem;

namespace {

// A class like any other: the format asks nothing of it but that it can be made empty, and copied.
struct Cell {
  double edges[3] = {0, 0, 0};
  std::string group;
};

// Writes a cell as an item: here as an object of two values.
class WriteCell : public QZWriteFxn<Cell> {
 public:
  const char* GetTag() const override { return "Cell"; }
  const void* GetType() const override { return QZGetDataType<Cell>(); }
  WriteCell* CreateCopy() const override { return new WriteCell(*this); }
  bool operator()(qzostream& out, const Cell& cell, const QZBinaryIOHandlerBase& handler) const override {
    QZContainer values;
    values.SetData<double*>("edges", cell.edges, 3);
    values.SetData("group", cell.group);
    return QZBWriteQZBase(out, values, GetTag(), handler);
  }
};

// Reads it back. The length is what the stream claims, and QZBReadQZBase checks it.
class ReadCell : public QZReadFxn<Cell> {
 public:
  const char* GetTag() const override { return "Cell"; }
  const void* GetType() const override { return QZGetDataType<Cell>(); }
  ReadCell* CreateCopy() const override { return new ReadCell(*this); }
  unsigned int operator()(qzistream& in, Cell& cell, unsigned long length,
                          const QZBinaryIOHandlerBase& handler) const override {
    QZContainer values;
    const unsigned int code = QZBReadQZBase(in, values, length, handler);
    if (code != QZBReturn::Success) return code;
    unsigned int count = 0;
    const double* const edges = values.GetData<double*>("edges", &count);
    if (count != 3) return QZBReturn::CheckFailed;
    for (unsigned int i = 0; i < count; ++i) cell.edges[i] = edges[i];
    cell.group = values.GetData<std::string>("group");
    return QZBReturn::Success;
  }
};

// What a program calls once for a handler. A library announces it to all programs: QZRegisterQZBInitializer(TeachCell).
bool TeachCell(QZBinaryIOHandlerBase& handler) {
  return handler.SetWriteFxn(WriteCell(), false) && handler.SetReadFxn(ReadCell(), false) &&
         QZInstallGenericDataHandler<Cell>(handler, "BaseCell");
}

std::string written(const QZBase& object, const QZBinaryIOHandlerBase& handler) {
  qzosstream out;
  QZBWriteQZBase(out, object, "", handler);
  return out.str();
}

QZContainer read(const std::string& bytes, const QZBinaryIOHandlerBase& handler) {
  qzisstream in;
  in.set(bytes.data(), bytes.size(), false);
  QZContainer object;
  const unsigned int code = QZBReadQZBase(in, object, bytes.size(), handler);
  if (code != QZBReturn::Success) qzerr << QZGetQZBReturnString(code) << qzendl;
  return object;
}

}  // namespace

int main() {
  QZBinaryIOHandler knowing;
  TeachCell(knowing);
  const QZBinaryIOHandler unknowing;

  QZContainer crystal;
  crystal.SetData("name", std::string("quartz"));
  crystal.SetData("cell", Cell{{4.9, 4.9, 5.4}, "P3221"});
  const std::string bytes = written(crystal, knowing);

  const QZContainer copy = read(bytes, knowing);
  qzout << copy.GetData<std::string>("name") << ": " << copy.GetData<Cell>("cell").group << qzendl;

  // A program that has never heard of cells changes the name, and the cell goes through unharmed.
  QZContainer passed = read(bytes, unknowing);
  passed.SetData("name", std::string("quartz, cleaned"));
  const QZContainer back = read(written(passed, unknowing), knowing);
  qzout << back.GetData<std::string>("name") << ": " << back.GetData<Cell>("cell").edges[2] << qzendl;
}
