"use strict";
const findings = [];
addEventListener("error", (error) => findings.push(error.message));
addEventListener("load", () => setTimeout(() => {
  check(hits === 0, `${hits} scripts ran`);
  document.querySelector("#findings").textContent = findings.slice(0, 10).join("\n") || "all is well";
}, 300));
const check = (good, what) => good || findings.push(what);
const all = (selector, within = document) => [...within.querySelectorAll(selector)];
const text = (selector) => document.querySelector(selector).textContent;
const shown = (selector) => all(selector).filter((one) => one.checkVisibility());
const evil = "\"'></svg><\/script></style><img src=x onerror=hit()>\\u202e\\u2028\\u001b";
const search = (id, words) => {
  const input = document.querySelector(`#${id} input`);
  input.value = words;
  input.dispatchEvent(new Event("input"));
};

// Nothing broke out, nothing is reached for, nothing is invisible.
const own = "a b body br button code dd details div dl dt g h1 h2 h3 head header html input li meta nav ol output p path pre " +
  "rect script section small span style summary svg table tbody td text th thead time title tr ul";
for (const element of all("*")) {
  check(own.split(" ").includes(element.localName), `an element ${element.localName}`);
  for (const { name, value } of element.attributes) {
    const harmless = !name.startsWith("on") && !["src", "style", "srcdoc"].includes(name) && !value.includes("hit()");
    check(harmless && (!name.endsWith("href") || value.startsWith("#")), `an attribute ${name}=${value}`);
  }
}
check(all("script").length === 3 && all("style").length === 1, "scripts or styles");
check(!/url\(|@import/.test(text("style")), "the network");
check(!/[\0-\t\v-\x1f\x7f-\xa0\u200b-\u200f\u2028-\u202e\u2066-\u2069]/.test(text("body").replaceAll("\n", "")), "invisible");

// Every part says what it should.
const replayed = text("header").includes("This is a recording, of linux-");
for (const where of ["title", "h1", "#switch", "#fabric", "#timeline", "#log", replayed ? "#zoning" : "h1"])
  check(text(where).includes(evil), `the text is not in ${where}`);
check(text(".verdict") === "All that was read is up to date.", text(".verdict"));
check(text("#chassis .units").includes("power supply 1not installed"), text("#chassis .units"));
check(all(".panel li").map((tile) => tile.textContent).join() === "0OKF,1StoppedF,2OKF", text(".panel"));
check(text("#ports tbody tr:nth-child(2)").includes("10 Stopped") && text("#ports").includes("<img onerror=x>"), text("#ports"));
check(all("#fabric svg .node").length === 2 || /No picture: .+/.test(text("#fabric")), "the picture");
check(/vex_IPConnect10\d/.test(text("#calls tbody")), text("#calls tbody"));

// The timeline is in order, and the same secret is the same mask.
const times = all("#timeline time").map((time) => time.dateTime);
check(times.length > 8 && times.join() === [...times].sort().join(), `times: ${times}`);
const story = all("#timeline [data-row]").map((row) => row.textContent);
const place = (...words) => story.findIndex((entry) => words.every((word) => entry.includes(word)));
const order = [["pass", "slowest: "], ["switch event", `first ${evil}`], ["switch event", "CHASSIS_OPERCHANGE"],
  ["DCEventPowerSupplyRemove", "index 1"], ["AcctAdd", "user name masked-"], ["last masked-"]].map((words) => place(...words));
check(order[0] >= 0 && order.every((at, i) => i === 0 || at > order[i - 1]), `order: ${order}: ${story.join("\n")}`);
const mask = story[order[5]].match(/last (masked-[0-9a-f]{8}) did it/)[1];
check(text("#switch").includes(mask) && story[order[4]].includes(mask) && text("#log").includes(mask), `${mask} is not everywhere`);

// Search and folding.
search("ports", "stopped");
check(shown("#ports tbody tr").length === 1 && shown(".panel li").length === 1, "search of ports");
check(text("#ports output") === "1 of 3", text("#ports output"));
search("zoning", "TWO fcid");
check(shown("#zoning [data-row]").length === 1 && shown("#zoning [data-group]").length === 1, "search of zones");
search("timeline", "last did");
check(shown("#timeline [data-row]").length === 1, "search of the timeline");
for (const id of ["ports", "zoning", "timeline"]) search(id, "");
check(all("[data-row], [data-group], [data-follows]").every((row) => row.checkVisibility()), "the end of a search");
document.querySelector("[data-fold=close]").click();
check(shown("[data-row]").length === 0, "folding");
document.querySelector("[data-fold=open]").click();
check(shown("[data-row]").length > 0, "unfolding");
