type Child = Node | string | undefined;

/** Makes an element. Every text becomes a text node, so nothing in a trace is ever markup. */
export function element<Name extends keyof HTMLElementTagNameMap>(
  name: Name,
  attributes: Record<string, string> = {},
  ...children: Child[]
): HTMLElementTagNameMap[Name] {
  const made = document.createElement(name);
  for (const [attribute, value] of Object.entries(attributes)) made.setAttribute(attribute, value);
  made.append(...children.filter((child) => child !== undefined));
  return made;
}

export function button(label: string, action: () => void, name = label): HTMLButtonElement {
  const made = element("button", { type: "button", "aria-label": name, title: name }, label);
  made.addEventListener("click", action);
  return made;
}

/** A section of the page with its heading. */
export function section(id: string, title: string, ...children: Child[]): HTMLElement {
  const heading = element("h2", { id: `${id}-title` }, title);
  return element("section", { id, "aria-labelledby": heading.id }, heading, ...children);
}
