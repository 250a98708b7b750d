#pragma once

namespace tarnex {

// Blue and orange rather than green and red: most people can tell them apart. A plot stands twice
// in the page, drawn for a wide screen and for a narrow one, so that its texts keep their size.
inline constexpr const char* kReportStyle = R"(
:root { color-scheme: light dark; --page: #f6f7f9; --card: #fff; --text: #1c2330; --faint: #5d6778;
  --line: #dde1e8; --sent: #2f6fb5; --held-back: #9aa4b2; --not-sent: #d1491b; --waits: #e0a100;
  --band: #2f6fb533; }
@media (prefers-color-scheme: dark) { :root { --page: #12161d; --card: #1b212b; --text: #e6eaf0;
  --faint: #9aa5b5; --line: #323b49; --sent: #6aa6e8; --held-back: #707b8b; --not-sent: #f07a4d;
  --waits: #f0c04a; --band: #6aa6e840; } }
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 800px; padding: 24px 16px 40px; background: var(--page);
  color: var(--text); line-height: 1.5; font: 16px/1.5 system-ui, -apple-system, "Segoe UI", Roboto,
  "Noto Sans", "Noto Sans CJK SC", "Microsoft YaHei", sans-serif; }
h1 { font-size: 26px; line-height: 1.2; margin: 0; }
h2 { font-size: 18px; margin: 0 0 8px; }
p { margin: 4px 0; }
.faint, footer { color: var(--faint); font-size: 14px; }
footer { margin-top: 16px; }
section { background: var(--card); border: 1px solid var(--line); border-radius: 10px;
  margin-top: 16px; padding: 16px; overflow-wrap: anywhere; }
dl { display: grid; grid-template-columns: repeat(auto-fit, minmax(150px, 1fr)); gap: 12px 20px;
  margin: 0; }
dt { color: var(--faint); font-size: 14px; }
dd { margin: 0; font-size: 18px; font-weight: 600; line-height: 1.3; }
dd.bad { color: var(--not-sent); }
ul { margin: 0; padding-left: 20px; }
li { margin: 4px 0; }
svg { display: block; width: 100%; height: auto; }
svg.narrow { display: none; }
.label { font-size: 12px; fill: var(--faint); }
.axis { stroke: var(--faint); }
.grid { stroke: var(--line); }
.limit { stroke: var(--not-sent); stroke-dasharray: 5 4; }
.touch { fill: transparent; }
.touch:hover { fill: var(--band); }
.band { fill: var(--band); }
.mean { fill: none; stroke: var(--sent); stroke-width: 2; stroke-linejoin: round; }
rect.sent { fill: var(--sent); } rect.held-back { fill: var(--held-back); }
rect.not-sent { fill: var(--not-sent); } rect.waits { fill: var(--waits); }
.legend { display: flex; flex-wrap: wrap; gap: 2px 16px; font-size: 14px; }
.legend i { display: inline-block; width: 12px; height: 12px; margin-right: 6px; border-radius: 3px; }
i.sent { background: var(--sent); } i.held-back { background: var(--held-back); }
i.not-sent { background: var(--not-sent); } i.waits { background: var(--waits); }
i.band { background: var(--band); }
table { border-collapse: collapse; width: 100%; margin-top: 8px; font-size: 15px; }
th { color: var(--faint); font-size: 14px; font-weight: 400; text-align: left; }
th, td { border-bottom: 1px solid var(--line); padding: 5px 12px 5px 0; vertical-align: top; }
tr:last-child td { border-bottom: 0; }
.number { text-align: right; font-variant-numeric: tabular-nums; }
.messages td:not(:last-child) { white-space: nowrap; }
@media (max-width: 600px) {
  svg.wide { display: none; } svg.narrow { display: block; }
  dl { grid-template-columns: 1fr 1fr; }
  .messages thead { display: none; }
  .messages td { border: 0; display: inline-block; padding: 0 10px 0 0; }
  .messages td:last-child { display: block; }
  .messages tr { display: block; border-bottom: 1px solid var(--line); padding: 8px 0; }
  .messages tr:last-child { border: 0; }
}
)";

} // namespace tarnex
