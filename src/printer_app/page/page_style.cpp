#include "printer_app/page/page.h"

namespace printer_app {

std::string_view pageStyle() {
    return R"css(
:root {
  color-scheme: light dark;
  --page: #f3f2ed; --card: #fffefb; --ink: #1c2330; --soft: #596170; --line: #dcd9ce; --edge: #868c98;
  --accent: #1b4f9b; --on-accent: #fff; --busy: #1b4f9b; --calm: #596170; --wanting: #8a4a00; --bad: #a4221c; --good: #1e6a3a;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #11151b; --card: #1a2028; --ink: #e5e8ed; --soft: #a3acb9; --line: #303945; --edge: #737e8d;
    --accent: #8fbaff; --on-accent: #0d1b31; --busy: #8fbaff; --calm: #a3acb9; --wanting: #ffc36b; --bad: #ff9e94; --good: #7fd49b;
  }
}
* { box-sizing: border-box; }
body {
  max-width: 72rem; margin: 0 auto; padding: 0 1rem 3rem; background: var(--page); color: var(--ink);
  font: 1rem/1.5 system-ui, sans-serif; overflow-wrap: anywhere;
}
h1, h2, h3, h4, p, dl, dd, ul { margin: 0; padding: 0; }
h1 { font-size: 1.125rem; letter-spacing: .02em; }
h2 { font-size: 1.5rem; line-height: 1.2; }
h3 { font-size: .9375rem; color: var(--soft); }
h4 { font-size: 1.125rem; line-height: 1.35; }
h2, h4 { display: -webkit-box; overflow: hidden; -webkit-box-orient: vertical; -webkit-line-clamp: 3; }
a, summary { color: var(--accent); }
summary { cursor: pointer; padding: .5rem 0; }
code {
  display: block; margin: .375rem 0; padding: .5rem .75rem; border-radius: .375rem; background: var(--page);
  font: .875rem/1.5 ui-monospace, monospace; user-select: all;
}
:focus-visible { outline: .1875rem solid var(--accent); outline-offset: .125rem; }
[hidden], .notice:empty, html:not(.scripted) .upload { display: none !important; }
.unseen { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); white-space: nowrap; }
.soft, .empty, dt, .progress span { color: var(--soft); font-size: .875rem; }

body > header { display: flex; align-items: center; gap: .625rem; padding: 1rem 0; }
.notice, .queue { border: 1px solid var(--line); border-radius: .75rem; background: var(--card); }
.notice { margin-bottom: 1rem; padding: .75rem 1rem; border-left: .3125rem solid currentcolor; }
#silence:not([hidden]) ~ main { opacity: .6; } /* what it shows may be over */
.queue { margin-bottom: 1.5rem; padding: 1.25rem; }
.queue[data-over] { outline: .1875rem dashed var(--accent); outline-offset: -.375rem; }
.head, .title { display: flex; flex-wrap: wrap; align-items: baseline; gap: .25rem .75rem; }
.head .state, .title .state { margin-left: auto; }
.head { padding-bottom: 1rem; }
.head .soft { order: 1; flex-basis: 100%; }
.findings { padding-bottom: 1rem; }
.findings li { list-style: none; margin-top: .5rem; padding-left: .75rem; border-left: .1875rem solid currentcolor; }
.findings li > * { color: var(--ink); }

.state { white-space: nowrap; font-size: .875rem; font-weight: 600; }
.state::before { content: ""; display: inline-block; width: .625rem; height: .625rem; margin-right: .4375rem; border-radius: 50%; background: currentcolor; }
.busy { color: var(--busy); } .calm { color: var(--calm); } .wanting { color: var(--wanting); } .bad { color: var(--bad); } .good { color: var(--good); }

.job, .past { display: grid; gap: 1rem; padding: 1rem 0; border-top: 1px solid var(--line); }
.facts { display: grid; gap: .625rem; align-content: start; min-width: 0; }
.picture { display: block; aspect-ratio: 297 / 210; border: 1px solid var(--line); border-radius: .375rem; overflow: hidden; background: #fff; }
.picture img { display: block; width: 100%; height: 100%; object-fit: contain; }
.picture.none { display: grid; place-items: center; padding: .5rem; background: none; border-style: dashed; color: var(--soft); font-size: .8125rem; text-align: center; }
.past { grid-template-columns: 5rem 1fr; padding: .75rem 0; }
.past .facts { gap: .25rem; }
.past h4 { font-size: 1rem; }
dl { display: grid; grid-template-columns: auto 1fr; gap: .5rem 1.5rem; }
.pens { display: flex; flex-wrap: wrap; gap: .375rem; }
.swatch { width: .75rem; height: .75rem; margin-right: .375rem; border: 1px solid var(--line); border-radius: 50%; vertical-align: -.0625rem; }
.pens li { list-style: none; padding: .125rem .625rem; border: 1px solid var(--line); border-radius: 1rem; font-size: .8125rem; }
progress { width: 100%; height: .5rem; border: 0; border-radius: .25rem; overflow: hidden; background: var(--line); appearance: none; }
progress::-webkit-progress-bar { background: var(--line); }
progress::-webkit-progress-value { background: var(--busy); transition: inline-size 1s linear; }
progress::-moz-progress-bar { background: var(--busy); }
.progress progress { display: block; margin-bottom: .25rem; }

form { display: flex; flex-wrap: wrap; gap: .5rem; align-items: start; }
button, .stop > summary, select, input {
  min-height: 2.75rem; padding: .5rem .875rem; border: 1px solid var(--edge); border-radius: .5rem;
  background: var(--card); color: var(--ink); font: inherit;
}
.past button { min-height: 2.25rem; padding: .25rem .75rem; font-size: .875rem; }
button { font-weight: 600; cursor: pointer; }
button:hover, .stop > summary:hover { border-color: var(--accent); }
.wanted { border-color: var(--accent); background: var(--accent); color: var(--on-accent); }
.danger, .stop > summary { color: var(--bad); }
.stop > summary { display: inline-flex; align-items: center; font-weight: 600; list-style: none; }
.stop > summary::-webkit-details-marker { display: none; }
.stop[open] { flex-basis: 100%; }
.stop .danger { border-color: var(--bad); background: var(--bad); color: var(--card); }
.stop p { padding: .5rem 0; }
[aria-busy] button { opacity: .6; }

.side { padding-top: 1rem; border-top: 1px solid var(--line); }
.upload { display: grid; gap: .75rem; align-items: stretch; margin-bottom: .75rem; }
.upload label { display: grid; gap: .25rem; font-size: .875rem; }
.file { padding: .75rem; border: 1px dashed var(--edge); border-radius: .5rem; }
.file input { width: 100%; min-height: 0; padding: .25rem 0; border: 0; background: none; font-size: .875rem; }
::file-selector-button {
  display: block; margin: 0 0 .375rem; padding: .375rem .75rem; border: 1px solid var(--edge); border-radius: .375rem;
  background: var(--card); color: var(--ink); font: inherit; font-weight: 600; cursor: pointer;
}
.choices { display: grid; grid-template-columns: 1fr 1fr; gap: .75rem .5rem; }
.choices label:last-child { grid-column: 1 / -1; }
.choices select, .choices input { width: 100%; padding: .5rem; }
.queue > h2 + p { margin-top: .75rem; }
.history { padding-top: 1rem; }
.history h3 { padding-bottom: .5rem; }
.empty { padding: 1.5rem 0; }

.job ~ .job .picture { width: 9rem; }
@media (min-width: 34rem) {
  .job { grid-template-columns: 15rem 1fr; }
  .job ~ .job .picture { width: auto; }
  dl { display: flex; flex-wrap: wrap; }
}
@media (min-width: 60rem) {
  .queue:has(.side) {
    display: grid; grid-template: "head head" "findings side" "jobs side" "history side" 1fr / 1fr 16rem; column-gap: 1.5rem;
  }
  .head { grid-area: head; } .head .soft { order: 0; flex-basis: auto; } .findings { grid-area: findings; } .jobs { grid-area: jobs; } .history { grid-area: history; }
  .side { grid-area: side; padding: 0 0 0 1.5rem; border-top: 0; border-left: 1px solid var(--line); }
  .job:first-of-type { border-top: 0; padding-top: 0; }
}
progress, .state::before { forced-color-adjust: none; }
@media (prefers-reduced-motion: reduce) { * { transition: none !important; } }
)css";
}

std::string_view pageIcon() {
    return R"svg(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 32 32"><rect width="32" height="32" rx="7" fill="#1b4f9b"/>
<path d="M5 22C9 6 13 6 16 16s7 10 11-6" fill="none" stroke="#fff" stroke-width="2.5" stroke-linecap="round"/>
<circle cx="27" cy="10" r="2.5" fill="#ffc36b"/></svg>
)svg";
}

} // namespace printer_app
