#include "live_view.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <ctime>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <utility>

#include "embedded.h"
#include "errors.h"
#include "view_data.h"

namespace zrvtool {

namespace sim = zrv::sim;

namespace {

constexpr std::size_t kLogRows = 40;
constexpr unsigned kMaxConnections = 64;
constexpr std::size_t kConnectionBytes = 16 * 1024;  // of the library for one request; a longer one is refused
constexpr unsigned kIdleSeconds = 15;

struct Reply {
  unsigned status = MHD_HTTP_OK;
  const char* type = "text/plain; charset=utf-8";
  std::string body;
};

// The page loads nothing from elsewhere, and no other page may show it or read what it reads.
constexpr std::array<std::pair<const char*, const char*>, 5> kHeaders = {{
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'unsafe-inline'; style-src 'unsafe-inline'; img-src data:; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Referrer-Policy", "no-referrer"},
    {"Cache-Control", "no-store"},
}};

MHD_Result Send(MHD_Connection* connection, const Reply& reply) {
  MHD_Response* response =
      MHD_create_response_from_buffer(reply.body.size(), const_cast<char*>(reply.body.data()), MHD_RESPMEM_MUST_COPY);
  if (!response) return MHD_NO;
  MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, reply.type);
  for (const auto& [name, value] : kHeaders) MHD_add_response_header(response, name, value);
  if (reply.status == MHD_HTTP_METHOD_NOT_ALLOWED)
    MHD_add_response_header(response, MHD_HTTP_HEADER_ALLOW, "GET, HEAD");
  const MHD_Result queued = MHD_queue_response(connection, reply.status, response);
  MHD_destroy_response(response);
  return queued;
}

bool Reads(std::string_view method) { return method == MHD_HTTP_METHOD_GET || method == MHD_HTTP_METHOD_HEAD; }

std::string_view Value(MHD_Connection* connection, MHD_ValueKind kind, const char* name) {
  const char* value = MHD_lookup_connection_value(connection, kind, name);
  return value ? value : "";
}

std::optional<std::uint64_t> Number(std::string_view text) {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

struct LiveView::Server {
  Server(sim::PseudoTerminal& simulator, std::uint16_t wanted, std::string command)
      : terminal(simulator), hint(std::move(command)), log(kLogRows) {
    Listen(wanted);
    terminal.Access([this](sim::Controller& c) { c.Observe([this](const sim::LinkEvent& event) { log.Add(event); }); });
  }

  ~Server() {
    MHD_stop_daemon(daemon);
    terminal.Access([](sim::Controller& c) { c.Observe({}); });
  }

  // One thread of the library serves all connections, and none of them ever waits for a reader.
  void Listen(std::uint16_t wanted) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(wanted);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    daemon = MHD_start_daemon(MHD_USE_AUTO_INTERNAL_THREAD, 0, nullptr, nullptr, &Server::OnRequest, this,
                              MHD_OPTION_SOCK_ADDR, &address, MHD_OPTION_CONNECTION_LIMIT, kMaxConnections,
                              MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionBytes, MHD_OPTION_CONNECTION_TIMEOUT,
                              kIdleSeconds, MHD_OPTION_END);
    if (!daemon) {
      throw ToolError("port " + std::to_string(wanted) + " of 127.0.0.1 cannot be had for the live view (" +
                      std::strerror(errno) + ").\nGive another one, or none to take one that is free.");
    }
    port = MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_BIND_PORT)->port;
  }

  // A page elsewhere can make its own name lead to 127.0.0.1, and would then pass for ours: the name gives it away.
  bool IsOurName(std::string_view host) const {
    const std::string_view name = host.substr(0, host.rfind(':'));
    if (name != "127.0.0.1" && name != "localhost") return false;
    return name.size() < host.size() && Number(host.substr(name.size() + 1)) == port;
  }

  Reply State() {
    nlohmann::ordered_json state = terminal.Access([this](sim::Controller& c) { return ViewState(c, log); });
    state["session"] = session;
    state["port"] = terminal.Port();
    state["hint"] = hint;
    // A name is any bytes.
    return {MHD_HTTP_OK, "application/json", state.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)};
  }

  Reply Points(std::string_view after) {
    const auto index = Number(after);
    if (!index) return {MHD_HTTP_BAD_REQUEST, "text/plain", "after is the index of a point\n"};
    return {MHD_HTTP_OK, "application/octet-stream",
            terminal.Access([&](sim::Controller& c) { return DrawnPoints(c, *index); })};
  }

  Reply Answer(MHD_Connection* connection, std::string_view path, std::string_view method) {
    if (!IsOurName(Value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_HOST)))
      return {MHD_HTTP_FORBIDDEN, "text/plain", "this page is at " + Url() + "\n"};
    if (!Reads(method)) return {MHD_HTTP_METHOD_NOT_ALLOWED, "text/plain", "this page can only be read\n"};
    if (path == "/") return {MHD_HTTP_OK, "text/html; charset=utf-8", std::string(kViewPage)};
    if (path == "/state") return State();
    if (path == "/drawn") return Points(Value(connection, MHD_GET_ARGUMENT_KIND, "after"));
    if (path == "/commanded")
      return {MHD_HTTP_OK, "application/octet-stream",
              terminal.Access([](sim::Controller& c) { return CommandedPoints(c); })};
    return {MHD_HTTP_NOT_FOUND, "text/plain", "there is no such page here\n"};
  }

  std::string Url() const { return "http://127.0.0.1:" + std::to_string(port) + "/"; }

  // The library calls when the head of a request is there, and again for each piece of a body, of which we want none:
  // answered at once, the request ends there.
  static MHD_Result OnRequest(void* self, MHD_Connection* connection, const char* path, const char* method, const char*,
                              const char*, std::size_t* bodyBytes, void** seen) {
    static int mark;
    if (Reads(method) && !*seen) {
      *seen = &mark;
      return MHD_YES;
    }
    if (*bodyBytes != 0) return MHD_NO;
    try {
      return Send(connection, static_cast<Server*>(self)->Answer(connection, path, method));
    } catch (const std::exception&) {
      return MHD_NO;
    }
  }

  sim::PseudoTerminal& terminal;
  std::string hint;
  sim::LinkLog log;  // guarded as the controller is
  // Tells a page that it talks to another simulator than before.
  std::string session = std::to_string(getpid()) + "-" + std::to_string(time(nullptr));
  MHD_Daemon* daemon = nullptr;
  std::uint16_t port = 0;
};

LiveView::LiveView(sim::PseudoTerminal& terminal, std::uint16_t port, const std::string& hint)
    : server_(std::make_unique<Server>(terminal, port, hint)) {}

LiveView::~LiveView() = default;

std::string LiveView::Url() const { return server_->Url(); }

}  // namespace zrvtool
