#include "simulator/link_log.h"

#include <algorithm>

#include "device/protocol.h"

namespace zrv::sim {

namespace {

using Kind = Exchange::Kind;

Kind KindOf(LinkEvent::Kind kind) {
  switch (kind) {
    case LinkEvent::Kind::kRefused: return Kind::kRefused;
    case LinkEvent::Kind::kBlock: return Kind::kBlock;
    case LinkEvent::Kind::kAnswer: return Kind::kReport;
    default: return Kind::kCommand;
  }
}

Exchange Begun(const LinkEvent& event) {
  Exchange exchange;
  exchange.kind = KindOf(event.kind);
  exchange.time = event.time;
  exchange.code = event.code;
  if (exchange.kind != Kind::kCommand && exchange.kind != Kind::kRefused) return exchange;
  exchange.payload = event.content.size();
  std::copy_n(event.content.begin(), std::min(exchange.payload, Exchange::kHeadBytes), exchange.head.begin());
  return exchange;
}

bool SameCommand(const Exchange& a, const Exchange& b) {
  return a.kind == b.kind && a.code == b.code && a.payload == b.payload && a.head == b.head;
}

}  // namespace

void LinkLog::Add(const LinkEvent& event) {
  if (event.kind == LinkEvent::Kind::kAnswer) {
    AddAnswer(event);
  } else {
    AddFromHost(event);
  }
}

void LinkLog::AddFromHost(const LinkEvent& event) {
  const Exchange begun = Begun(event);
  if (exchanges_.size() > 0 && SameCommand(exchanges_.Newest(), begun)) {
    ++exchanges_.Newest().times;
  } else {
    exchanges_.Push(begun);
  }
  exchanges_.Newest().time = event.time;
  exchanges_.Newest().toController += event.bytes;
}

// An answer belongs to the newest exchange when that has the same command, except an acknowledgement more than there
// were commands: with it the controller reports the end of what it was told to play.
void LinkLog::AddAnswer(const LinkEvent& event) {
  const auto& mark = protocol::kAcknowledge;
  const bool acknowledges =
      event.content.size() >= mark.size() && std::ranges::equal(event.content.first(mark.size()), mark);
  const auto belongs = [&](const Exchange& e) {
    return e.code == event.code && (e.kind == Kind::kReport || !acknowledges || e.acknowledgements < e.times);
  };
  if (exchanges_.size() == 0 || !belongs(exchanges_.Newest())) exchanges_.Push(Begun(event));
  Exchange& exchange = exchanges_.Newest();
  exchange.time = event.time;
  exchange.toHost += event.bytes;
  exchange.acknowledgements += acknowledges;
}

}  // namespace zrv::sim
