// Makes records, writes them, and filters them behind a progress bar.
#include <qz/dataflow.h>

using namespace QZSystem;
using namespace QZDataFlow;

namespace {

// A field is described once and used with every record.
const QZField<std::string> name("name");
const QZField<double> halfLife("half_life", QZFieldMeta().SetOption(QZMeta::GetValue("Units.Time.s")));
const QZField<double> decay("decay");

std::string madeRecords() {
  qzosstream out;
  const struct {
    const char* name;
    double seconds;
  } nuclides[] = {{"C-14", 1.8e11}, {"F-18", 6586}, {"Ra-226", 5.05e10}};
  for (const auto& nuclide : nuclides) {
    QZRecord record;
    record.SetValue(name, std::string(nuclide.name));
    record.SetValue(halfLife, nuclide.seconds);
    QZWriteRecord(out, record, "binary");
  }
  return out.str();
}

}  // namespace

int main() {
  const std::string bytes = madeRecords();
  qzisstream source;
  source.set(bytes.data(), bytes.size(), false);
  QZConsoleProgressTracer tracer("Filtering");
  qzprogressstream in(&source, false, &tracer, false);

  QZRecord record;
  while (QZReadRecord(record, in, "binary")) {
    const double seconds = record.GetValue(halfLife);
    if (seconds < 1e9) continue;
    record.SetValue(decay, 0.6931471805599453 / seconds);
    QZWriteRecord(qzout, record, "json");
  }
}
