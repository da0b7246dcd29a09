// The page of the live view, tools/view_page.html, as it was when the tool was built.
#ifndef ZRV_TOOLS_VIEW_PAGE_H
#define ZRV_TOOLS_VIEW_PAGE_H

#include <string_view>

namespace zrvtool {

extern const std::string_view kViewPage;

}  // namespace zrvtool

#endif
