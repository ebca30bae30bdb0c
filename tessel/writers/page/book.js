// Folds the side column, searches names and labels, and shows one language of several. Without it
// all of the page is in sight, so nothing stands here that the page does not say itself.
"use strict";
(() => {
  const most = 200; // results that are listed
  const byId = (id) => document.getElementById(id);
  const nav = byId("contents"), menu = byId("menu"), form = byId("find");
  const words = byId("words"), count = byId("count"), found = byId("found");
  const records = byId("records"), language = byId("language");

  const plain = (text) => text.normalize("NFKD").replace(/\p{M}/gu, "").toLowerCase();

  // ---- what the page holds

  const targetOf = (link) => decodeURIComponent(link.hash.slice(1));

  // The texts of a label, one for each language that has its own.
  const labelsOf = (cell) => [...(cell.children.length ? cell.children : [cell])].map(
    (text) => ({ lang: text.lang, text: text.textContent, plain: plain(text.textContent) }));

  // A variable is a row of its record's table, and mostly has a section behind it.
  const makeEntry = (row) => {
    const [head, cell] = row.cells, link = head.querySelector("a");
    const id = link ? targetOf(link) : row.id, name = head.textContent, labels = labelsOf(cell);
    const entry = { id, name, labels, record: row.closest("section").id };
    entry.heading = link && byId(id).querySelector("i");
    entry.isPart = row.className === "part";
    entry.plain = [plain(name), ...labels.map((label) => label.plain)].join("\n");
    return entry;
  };

  let known = null;
  const entries = () => known
    || (known = [...document.querySelectorAll(".fields > tbody > tr")].map(makeEntry));

  const labelIn = (entry, lang) => entry.labels.find((label) => label.lang === lang)
    || entry.labels[0] || { lang: "", text: "" };

  // ---- lists of links

  const linkTo = (entry, label) => {
    const item = document.createElement("li"), link = document.createElement("a");
    const name = document.createElement("code"), text = document.createElement("i");
    name.textContent = entry.name;
    text.textContent = label.text;
    if (label.lang)
      text.lang = label.lang;
    link.setAttribute("href", "#" + entry.id);
    link.append(name, " ", text);
    item.append(link);
    if (entry.isPart)
      item.className = "part";
    return item;
  };

  const shownLanguage = () => language ? language.value : "";

  // The variables of a record; filled when it is unfolded.
  const fill = (list) => {
    const lang = shownLanguage();
    list.replaceChildren(...entries().filter((entry) => entry.record === list.dataset.record)
      .map((entry) => linkTo(entry, labelIn(entry, lang))));
  };

  const addFold = (item) => {
    const link = item.querySelector("a");
    const list = document.createElement("ul"), fold = document.createElement("button");
    list.dataset.record = targetOf(link);
    list.hidden = true;
    fold.type = "button";
    fold.textContent = "+";
    fold.setAttribute("aria-expanded", "false");
    fold.setAttribute("aria-label", records.dataset.fold.replace("%1", link.textContent));
    fold.addEventListener("click", () => {
      list.hidden = !list.hidden;
      fold.textContent = list.hidden ? "+" : "\u2212";
      fold.setAttribute("aria-expanded", String(!list.hidden));
      if (!list.hidden)
        fill(list);
    });
    item.prepend(fold);
    item.append(list);
  };

  // ---- search

  // The shown label, unless only that of another language has what is looked for.
  const labelFound = (entry, wanted, lang) => {
    const shown = labelIn(entry, lang), name = plain(entry.name);
    const has = (label) => wanted.every((word) => name.includes(word) || label.plain.includes(word));
    return !entry.labels.length || has(shown) ? shown : entry.labels.find(has) || shown;
  };

  const search = () => {
    const wanted = plain(words.value).split(/\s+/).filter(Boolean);
    const hits = wanted.length
      ? entries().filter((entry) => wanted.every((word) => entry.plain.includes(word))) : [];
    const lang = shownLanguage();
    found.replaceChildren(...hits.slice(0, most)
      .map((entry) => linkTo(entry, labelFound(entry, wanted, lang))));
    records.hidden = wanted.length > 0;
    const text = hits.length > most ? count.dataset.most : count.dataset.found;
    count.textContent = wanted.length
      ? text.replace("%1", hits.length.toLocaleString("en")).replace("%2", String(most)) : "";
  };

  // Arrows go through the field and what was found.
  const move = (event) => {
    const stops = [words, ...found.querySelectorAll("a")];
    const step = { ArrowDown: 1, ArrowUp: -1 }[event.key];
    const place = stops.indexOf(document.activeElement);
    if (event.key === "Escape" && words.value) {
      words.value = "";
      search();
      words.focus();
    } else if (step && place >= 0 && stops[place + step]) {
      stops[place + step].focus();
      event.preventDefault();
    }
  };

  // ---- languages

  // Neighbours that have a language each say the same. An empty language shows all of them.
  const showLanguage = (lang) => {
    const groups = [];
    for (const text of document.querySelectorAll("main [lang], #records > li > a [lang]")) {
      const before = text.previousElementSibling;
      if (before && before.lang)
        groups[groups.length - 1].push(text);
      else
        groups.push([text]);
    }
    document.documentElement.classList.toggle("one", lang !== "");
    for (const group of groups) {
      const shown = group.find((text) => text.lang === lang) || group[0];
      for (const text of group)
        text.hidden = lang !== "" && text !== shown;
    }
    for (const entry of entries()) {
      const label = labelIn(entry, lang);
      if (entry.heading) {
        entry.heading.textContent = label.text;
        entry.heading.lang = label.lang;
      }
    }
    for (const list of records.querySelectorAll("ul:not([hidden])"))
      fill(list);
    search();
  };

  // ---- the page comes to life

  const setOpen = (isOpen) => {
    nav.classList.toggle("open", isOpen);
    menu.setAttribute("aria-expanded", String(isOpen));
  };

  document.documentElement.classList.add("script");
  form.hidden = menu.hidden = false;
  for (const item of records.children)
    addFold(item);
  words.addEventListener("input", search);
  nav.addEventListener("keydown", move);
  nav.addEventListener("click", (event) => {
    if (event.target.closest("a"))
      setOpen(false);
  });
  menu.addEventListener("click", () => setOpen(!nav.classList.contains("open")));
  form.addEventListener("submit", (event) => {
    event.preventDefault();
    const first = found.querySelector("a");
    if (first)
      first.click();
  });
  if (language) {
    language.addEventListener("change", () => showLanguage(language.value));
    showLanguage(language.value);
  }
})();
