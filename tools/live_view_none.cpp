// The live view in a build without it.
#include "errors.h"
#include "live_view.h"

namespace zrvtool {

struct LiveView::Server {};

LiveView::LiveView(zrv::sim::PseudoTerminal&, std::uint16_t, const std::string&) {
  throw ToolError("this zrv was built without the live view (ZRV_WITH_VIEW)");
}
LiveView::~LiveView() = default;
std::string LiveView::Url() const { return {}; }

}  // namespace zrvtool
