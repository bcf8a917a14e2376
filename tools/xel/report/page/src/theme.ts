import { button } from "./dom";

type Theme = "light" | "dark";

const darkSystem = matchMedia("(prefers-color-scheme: dark)");
const listeners: (() => void)[] = [];

/** Calls back whenever the page's colours have changed. */
export function onThemeChange(listener: () => void): void {
  listeners.push(listener);
}

/** The value of a colour of the style sheet. */
export function color(name: string): string {
  return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
}

function apply(theme: Theme): void {
  document.documentElement.dataset["theme"] = theme;
  for (const listener of listeners) listener();
}

/** Follows the system until its switch, which it returns, is used. */
export function themeSwitch(): HTMLElement {
  let chosen: Theme | undefined;
  const systemTheme = (): Theme => (darkSystem.matches ? "dark" : "light");
  const current = () => chosen ?? systemTheme();
  const label = () => (current() === "dark" ? "Light colours" : "Dark colours");
  const toggle = button(label(), () => {
    chosen = current() === "dark" ? "light" : "dark";
    update();
  });
  const update = () => {
    apply(current());
    toggle.textContent = toggle.title = label();
    toggle.setAttribute("aria-label", label());
  };
  darkSystem.addEventListener("change", update);
  // Paper is light.
  addEventListener("beforeprint", () => apply("light"));
  addEventListener("afterprint", update);
  update();
  return toggle;
}
