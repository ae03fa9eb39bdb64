#include "printer_app/page/page.h"

namespace printer_app {

std::string_view pageScript() {
    return R"js("use strict";
const main = document.querySelector("main");
const news = document.querySelector("#news");
const silence = document.querySelector("#silence");
const pollMs = 1000, patienceMs = 10000, longestMs = 30000;
let pause = pollMs, timer, told = newsOf(main), asked = 0, shown = 0;

document.documentElement.classList.add("scripted");

// The page is renewed in place: what is the same stays the same element, with its focus, its choices and what was opened.
const keyOf = (node) => (node.dataset && node.dataset.key) || node.nodeName;

function renewAttributes(old, fresh) {
  for (const { name } of [...old.attributes])
    if (!fresh.hasAttribute(name) && name !== "open" && name !== "data-over" && name !== "aria-busy") old.removeAttribute(name);
  for (const { name, value } of fresh.attributes)
    if (old.getAttribute(name) !== value) old.setAttribute(name, value);
}

function renewChildren(old, fresh) {
  const keys = new Set([...fresh.childNodes].map(keyOf));
  for (const child of [...old.childNodes]) if (!keys.has(keyOf(child))) child.remove();
  let at = old.firstChild;
  for (const wanted of fresh.childNodes) {
    let found = at;
    while (found && keyOf(found) !== keyOf(wanted)) found = found.nextSibling;
    if (!found) {
      old.insertBefore(document.importNode(wanted, true), at);
      continue;
    }
    if (found !== at) old.insertBefore(found, at);
    else at = at.nextSibling;
    renew(found, wanted);
  }
  while (at) {
    const next = at.nextSibling;
    at.remove();
    at = next;
  }
}

function renew(old, fresh) {
  if (old.isEqualNode(fresh)) return;
  if (old.nodeType !== Node.ELEMENT_NODE) old.data = fresh.data;
  else if (!("own" in old.dataset)) {
    if (old !== main) renewAttributes(old, fresh);
    renewChildren(old, fresh);
  }
}

function newsOf(element) {
  const articles = [...element.querySelectorAll("[data-news]")];
  return new Map(articles.map((article) => [`${article.dataset.key} ${article.closest(".queue").dataset.queue}`, article.dataset.news]));
}

function show(html) {
  const fresh = new DOMParser().parseFromString(html, "text/html");
  const held = [];
  for (let element = document.activeElement; element; element = element.parentElement) held.push(element);
  const inside = fresh.querySelector("main") || fresh.body;
  renew(main, inside);
  if (held[0] && held[0] !== document.activeElement)
    held.find((element) => element.isConnected && (element === held[0] || element.hasAttribute("tabindex")))?.focus({ preventScroll: true });

  const notice = inside.querySelector("[data-key=notice]").textContent;
  if (notice) main.querySelector("[data-key=notice]").textContent = notice;
  const now = newsOf(main), fresher = [];
  for (const [job, text] of now) if (text && told.get(job) !== text) fresher.push(text);
  if (fresher.length) news.textContent = fresher.join(" ");
  told = now;
}

// Whatever asks the program: its answer renews the page, unless a later question was answered by then; its silence is said.
async function ask(address, options) {
  const turn = ++asked;
  try {
    const answer = await fetch(address, { cache: "no-store", signal: AbortSignal.timeout(patienceMs), ...options });
    if (!answer.ok) throw new Error(`The program on the plotter's computer answers with error ${answer.status}.`);
    const html = await answer.text();
    if (turn > shown) show(html);
    shown = Math.max(turn, shown);
    pause = pollMs;
    silence.hidden = true;
  } catch (error) {
    pause = Math.min(2 * pause, longestMs);
    const text = error.message.startsWith("The program") ? error.message : "The program on the plotter's computer does not answer.";
    if (silence.hidden || silence.textContent !== text) silence.textContent = text;
    silence.hidden = false;
  }
}

async function poll() {
  clearTimeout(timer);
  if (document.hidden) return;
  await ask("/?part=main");
  clearTimeout(timer);
  timer = setTimeout(poll, pause);
}

function upload(form, file) {
  const { queue, session } = form.closest(".queue").dataset;
  const fields = new FormData(form);
  fields.delete("file");
  const address = `/upload?${new URLSearchParams([...fields, ["queue", queue], ["session", session], ["name", file.name]])}`;
  const request = new XMLHttpRequest(), progress = form.querySelector("progress");
  request.open("POST", address);
  request.setRequestHeader("Content-Type", "application/octet-stream");
  request.responseType = "json";
  request.upload.onprogress = (event) => (progress.value = (100 * event.loaded) / event.total);
  progress.value = 0;
  progress.hidden = false;
  return new Promise((done) => {
    request.onloadend = () => {
      progress.hidden = true;
      const error = request.status ? request.response?.error || `error ${request.status}` : "the program on the plotter's computer does not answer";
      done(request.status === 200 ? "" : error);
    };
    request.send(file);
  });
}

async function uploadAll(form, files) {
  const output = form.querySelector("output"), limit = Number(form.dataset.limit), said = [];
  form.setAttribute("aria-busy", "true");
  for (const file of files) {
    output.textContent = `Sending ${file.name} …`;
    const error = file.size > limit ? `has ${Math.ceil(file.size / 1e6)} MB, more than can be sent` : await upload(form, file);
    said.push(error ? `${file.name}: ${error}` : `${file.name} was sent.`);
  }
  output.textContent = said.join("\n");
  form.removeAttribute("aria-busy");
  form.elements.file.value = "";
  form.elements.copies.value = 1;
  poll();
}

document.addEventListener("submit", async (event) => {
  event.preventDefault();
  const form = event.target; // its buttons are called "action", and so hide its own
  if (form.hasAttribute("aria-busy")) return;
  if (form.classList.contains("upload")) return uploadAll(form, [...form.elements.file.files]);
  const body = new URLSearchParams(new FormData(form));
  body.set(event.submitter.name, event.submitter.value);
  main.querySelector("[data-key=notice]").textContent = "";
  form.setAttribute("aria-busy", "true");
  await ask(form.getAttribute("action"), { method: "POST", body });
  form.removeAttribute("aria-busy");
});

// A file that is dropped where nothing is plotted before somebody says so goes off at once; elsewhere, with the button.
for (const kind of ["dragover", "dragleave", "drop"]) {
  document.addEventListener(kind, (event) => {
    const queue = event.target.closest?.(".queue"), form = queue?.querySelector(".upload");
    if (![...event.dataTransfer.types].includes("Files")) return;
    event.preventDefault();
    if (!form) return;
    queue.toggleAttribute("data-over", kind === "dragover");
    if (kind !== "drop" || form.hasAttribute("aria-busy")) return;
    form.elements.file.files = event.dataTransfer.files;
    if (form.dataset.confirms === "true") form.requestSubmit();
    else form.querySelector("button").focus();
  });
}

document.addEventListener("visibilitychange", poll);
poll();
)js";
}

} // namespace printer_app
