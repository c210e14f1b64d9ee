#include "qz/system/cli/interface_opts.h"

#include <string>

#include "qz/system/cli/commandline.h"
#include "qz/system/cli/help.h"
#include "qz/system/cli/settings.h"
#include "qz/system/frame/error.h"

namespace QZSystem {

bool QZConfigureItf(QZInterface& itf, const QZOptions& opts) {
  itf.SetName(opts.GetName());
  itf.SetBrief(opts.GetBrief());
  itf.SetOrderPriority(opts.GetOrderPriority());
  for (const std::string& line : QZIter(opts.GetDetail())) itf.AddDetail(line);
  for (const QZOptions& group : QZIter(opts.GetOptions(false))) {
    if (!QZConfigureItf(*itf.AddInterface(), group)) return false;
  }
  for (const QZParameter& parameter : QZIter(opts.GetParameters(false))) itf.AddParameter(parameter);
  return true;
}

bool QZUpdateOpts(QZOptions& opts, const QZInterface& itf) {
  for (const QZInterface& category : QZIter(itf.GetInterfaces(false))) {
    QZOptions* group = opts.GetOption(category.GetName());
    if (!QZUpdateOpts(group != nullptr ? *group : opts, category)) return false;
  }
  for (const QZParameter& parameter : QZIter(itf.GetParameters(false))) {
    QZParameter* target = opts.GetParameter(parameter.GetName());
    if (target == nullptr || !parameter.GetHasValue(0)) continue;
    for (const std::string& text : QZIter(parameter.GetStringValues())) target->AddStringValue(text);
    target->LoadValue();
  }
  return true;
}

int QZConfigureOpts(QZOptions& opts, int argc, char** argv, bool printSettings) {
  QZInterface itf;
  if (!QZConfigureItf(itf, opts)) return QZConfigureStatus::Failed;
  if (QZCheckHelp(itf, argc, argv, true, qzerr)) return QZConfigureStatus::Help;
  if (!QZParseCommandLine(itf, argc, argv, nullptr, QZErrorLevel::Error, true)) return QZConfigureStatus::Failed;
  if (printSettings) {
    QZWriteSettings(itf, qzout, true, "");
    qzerr << qzendl;
  }
  return QZUpdateOpts(opts, itf) ? QZConfigureStatus::Done : QZConfigureStatus::Failed;
}

}  // namespace QZSystem
