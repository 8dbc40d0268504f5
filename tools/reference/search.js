// The search of the reference: names.js has every name with its place; the results are links, best first. Also scrolls
// the list of chapters to the current page.
(() => {
  "use strict";
  const up = document.currentScript.dataset.up;
  const box = document.getElementById("search"), list = document.getElementById("results");
  const most = 40;
  let selected = -1;

  // 0 for the same name, 1 for a beginning, 2 for the beginning of a word in the name, 3 for any part; 4 for no match.
  const rank = (name, wanted) => {
    const lower = name.toLowerCase(), at = lower.indexOf(wanted);
    if (at < 0) return 4;
    if (at === 0) return lower.length === wanted.length ? 0 : 1;
    return /[A-Z]/.test(name[at]) || /[^A-Za-z0-9]/.test(name[at - 1]) ? 2 : 3;
  };

  const find = (wanted) => {
    const found = [];
    for (const [name, about, place] of names) {
      const order = rank(name, wanted);
      if (order < 4) found.push({name, about, place, order});
    }
    return found.sort((a, b) => a.order - b.order || a.name.length - b.name.length).slice(0, most);
  };

  const select = (index) => {
    selected = index;
    [...list.children].forEach((item, at) => item.setAttribute("aria-selected", String(at === index)));
    list.children[index]?.scrollIntoView({block: "nearest"});
  };

  const show = () => {
    const wanted = box.value.trim().replace(/\(.*$/, "").split("::").pop().toLowerCase();
    list.replaceChildren();
    list.hidden = wanted === "";
    box.setAttribute("aria-expanded", String(!list.hidden));
    if (list.hidden) return;
    for (const {name, about, place} of find(wanted)) {
      const item = document.createElement("li"), link = document.createElement("a");
      const where = document.createElement("small");
      item.setAttribute("role", "option");
      link.href = up + place;
      link.textContent = name;
      where.textContent = about;
      link.append(where);
      item.append(link);
      list.append(item);
    }
    if (list.children.length === 0) {
      const nothing = document.createElement("p");
      nothing.textContent = "No such name";
      list.append(nothing);
      select(-1);
    } else {
      select(0);
    }
  };

  const hide = () => {
    list.hidden = true;
    box.setAttribute("aria-expanded", "false");
  };

  // The current page in the middle of the list of chapters, if the list scrolls beside the page.
  const chapters = document.querySelector("nav"), current = chapters.querySelector("[aria-current]");
  if (current) chapters.scrollTop = current.offsetTop - chapters.offsetTop - chapters.clientHeight / 2;

  box.addEventListener("input", show);
  box.addEventListener("focus", show);
  box.addEventListener("keydown", (event) => {
    const count = list.querySelectorAll("li").length;
    if (event.key === "Escape") {
      box.value = "";
      hide();
    } else if (count > 0 && event.key === "ArrowDown") {
      select((selected + 1) % count);
      event.preventDefault();
    } else if (count > 0 && event.key === "ArrowUp") {
      select((selected + count - 1) % count);
      event.preventDefault();
    } else if (count > 0 && event.key === "Enter") {
      list.children[selected].querySelector("a").click();
    }
  });
  list.addEventListener("click", hide);
  document.addEventListener("click", (event) => {
    if (!event.target.closest("[role=search]")) hide();
  });
  document.addEventListener("keydown", (event) => {
    if (event.key === "/" && document.activeElement === document.body) {
      box.focus();
      event.preventDefault();
    }
  });
})();
