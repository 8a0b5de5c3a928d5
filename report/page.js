// Search and folding. Without this the page lacks nothing else.
"use strict";

for (const search of document.querySelectorAll(".search")) {
  const section = search.closest("section");
  const input = search.querySelector("input");
  const found = search.querySelector("output");
  const rows = [...section.querySelectorAll("[data-row]")];
  const texts = rows.map((row) => row.textContent.toLowerCase());
  input.addEventListener("input", () => {
    const words = input.value.toLowerCase().split(/\s+/).filter((word) => word !== "");
    let shown = 0;
    rows.forEach((row, i) => {
      row.hidden = !words.every((word) => texts[i].includes(word));
      if (!row.hidden) shown += 1;
    });
    for (const tile of section.querySelectorAll("[data-follows]"))
      tile.hidden = rows[tile.dataset.follows].hidden;
    for (const group of section.querySelectorAll("[data-group]"))
      group.hidden = words.length > 0 && group.querySelector("[data-row]:not([hidden])") === null;
    found.textContent = words.length === 0 ? "" : shown + " of " + rows.length;
  });
  search.hidden = false;
}

for (const button of document.querySelectorAll("button[data-fold]")) {
  button.addEventListener("click", () => {
    for (const details of document.querySelectorAll("section > details"))
      details.open = button.dataset.fold === "open";
  });
  button.hidden = false;
}

// On paper nothing is folded.
let folded = [];
addEventListener("beforeprint", () => {
  folded = [...document.querySelectorAll("details:not([open])")];
  for (const details of folded) details.open = true;
});
addEventListener("afterprint", () => {
  for (const details of folded) details.open = false;
});
