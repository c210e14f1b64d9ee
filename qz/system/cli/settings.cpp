#include "qz/system/cli/settings.h"

#include "qz/system/cli/configure.h"
#include "qz/system/cli/typedparameter.h"
#include "qz/system/text/qzstring.h"

namespace QZSystem {

namespace {

constexpr unsigned int hiddenVisibility = 2;

std::string joined(const QZParameter& parameter, bool values) {
  std::string text;
  for (unsigned int i = 0; values ? parameter.GetHasValue(i) : parameter.GetHasDefault(i); ++i) {
    if (i > 0) text += ' ';
    text +=
        QuotedString(TrimmedNumber(parameter, values ? parameter.GetStringValue(i) : parameter.GetStringDefault(i)));
  }
  return text;
}

void writeParameter(const QZParameter& parameter, QZWriter& writer, bool showUnset) {
  if (parameter.GetHasValue(0)) {
    writer(parameter.GetName() + "  " + joined(parameter, true));
  } else if (parameter.GetVisibility() == hiddenVisibility || !showUnset) {
    return;
  } else if (parameter.GetHasDefault(0)) {
    writer("#" + parameter.GetName() + "  " + joined(parameter, false));
  } else {
    writer("#" + parameter.GetName() + " (Not set, no default)");
  }
  writer.NewLine();
}

bool isShown(const QZInterface& category, bool showUnset) {
  for (const QZParameter& parameter : QZIter(category.GetParameters(true))) {
    if (parameter.GetHasValue(0) || (showUnset && parameter.GetVisibility() != hiddenVisibility)) return true;
  }
  return false;
}

}  // namespace

std::string TrimmedNumber(const QZParameter& parameter, const std::string& text) {
  const void* const type = parameter.TypedParameterTypeID();
  const bool isFloating =
      type == QZGetDataType<QZTypedParameter<float>>() || type == QZGetDataType<QZTypedParameter<double>>();
  return isFloating ? QZTrimToSigFigs(text) : text;
}

bool QZWriteSettings(const QZInterface& itf, qzostream& out, bool showUnset, std::string mode) {
  QZTextWriter writer(out);
  writer.Start("#Interface settings");
  if (!mode.empty()) {
    writer.NewLine();
    writer("#Mode " + mode);
    writer.NewLine();
  }
  const bool written = WriteSettingsImpl(itf, writer, showUnset);
  writer.End();
  return written;
}

bool WriteSettingsImpl(const QZInterface& itf, QZWriter& writer, bool showUnset) {
  for (const QZParameter& parameter : QZIter(itf.GetParameters(false))) writeParameter(parameter, writer, showUnset);
  for (const QZInterface& category : QZIter(itf.GetInterfaces(false))) {
    if (!isShown(category, showUnset)) continue;
    writer.NewLine();
    writer("#" + category.GetName() + " : " + category.GetBrief());
    writer.NewLine();
    writer.Indent();
    WriteSettingsImpl(category, writer, showUnset);
    writer.EndIndent();
  }
  return true;
}

}  // namespace QZSystem
