function concat(recipients, subject, body)
    return recipients .. subject .. body
end
